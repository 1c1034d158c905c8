#include "actionbaritem.h"
#include "capturekit.h"

#include <QAbstractItemModelTester>

#include <stdexcept>

namespace {

/// Files that a filter takes, and of which some have companions that cannot be removed.
class Model : public PrintCaptureModelBase
{
public:
    using PrintCaptureModelBase::PrintCaptureModelBase;

    QStringList badCompanions;
    QStringList asked;
    QString filter; ///< Empty: the usual one.

protected:
    QString actionFilesFilter() override
    {
        return filter.isEmpty() ? PrintCaptureModelBase::actionFilesFilter() : filter;
    }
    bool removeExtraFiles(QFileInfo& file) override
    {
        asked.append(file.fileName());
        return PrintCaptureModelBase::removeExtraFiles(file) && !badCompanions.contains(file.fileName());
    }
};

} // namespace

/// The model of captured print jobs, without a window.
class CaptureModelTest : public CaptureTest
{
    Q_OBJECT

    /// The result that the model tells.
    bool deleteAll()
    {
        QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
        m_model->deleteAll();
        return done.wait() && done.count() == 1 && done.first().first().toBool();
    }

    std::unique_ptr<Model> m_model;

private Q_SLOTS:
    void init()
    {
        newFolder();
        m_model = std::make_unique<Model>(*m_converter, true);
    }
    void cleanup()
    {
        leaveFolder();
        m_model.reset();
    }

    void tableOfTheFolder()
    {
        add("b.pdf A.PDF c.TIF b.TIF notes.txt a.b.pdf");
        const QAbstractItemModelTester tester(m_model.get(),
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(m_model->rowCount(), 0); // nothing before the first refresh
        QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
        const QDateTime before = QDateTime::currentDateTime().addSecs(-60);
        m_model->slotUpdate();
        QCOMPARE(reset.count(), 1);

        QStringList titles;
        for (int column = -1; column <= m_model->columnCount(); ++column)
            titles.append(m_model->headerData(column, Qt::Horizontal).toString());
        QCOMPARE(titles.join(QLatin1Char('|')), s("|Document Name|Pages|Created At|Actions|"));
        QVERIFY(!m_model->headerData(0, Qt::Vertical).isValid());

        const QStringList expected = list("a.b.pdf A.PDF b.pdf");
        QCOMPARE(m_model->rowCount(), expected.size());
        for (int row = 0; row < expected.size(); ++row) {
            for (int column = 0; column < 4; ++column) {
                const QModelIndex cell = m_model->index(row, column);
                QCOMPARE(cell.data(Qt::TextAlignmentRole).toInt(), column ? int(Qt::AlignCenter) : 0);
                QCOMPARE(cell.data(Qt::ToolTipRole).toString(), column ? QString() : expected.at(row));
                QVERIFY(!cell.data(Qt::EditRole).isValid());
            }
            QCOMPARE(m_model->index(row, 0).data().toString(), expected.at(row));
            QCOMPARE(m_model->index(row, 1).data(), QVariant(0));
            QVERIFY(m_model->index(row, 2).data().toDateTime() > before);
        }
        QVERIFY(!m_model->data(QModelIndex()).isValid());
    }

    void orderOfTheListing()
    {
        add("b.pdf A.PDF c.TIF .hidden.pdf .pdf _.pdf a.b.pdf a.pdfx B1.pdf [.pdf \u00c4.pdf \u00e4a.pdf "
            "Zpdf");
        QVERIFY(QDir(folder()).mkdir(s("b folder.pdf")));
        for (const char* filter :
             {"*.pdf", "*.PDF", "*", "*.p?f", "a*.pdf", "*.pdf *.tif", "*.[pt]*", ".pdf"}) {
            m_model->filter = s(filter);
            m_model->slotUpdate();
            QStringList shown;
            for (int row = 0; row < m_model->rowCount(); ++row)
                shown.append(m_model->index(row, 0).data().toString());
            QCOMPARE(shown, QDir(folder(), m_model->filter).entryList());
            QCOMPARE(shown.isEmpty(), m_model->filter == s(".pdf"));
        }
    }

    void whatTheRefreshSaw()
    {
        add("gone.pdf other.pdf");
        const QDateTime before[] = {created("gone.pdf"), created("other.pdf")};
        PrintCaptureModelBase model(*m_converter, true);
        model.slotUpdate();
        QVERIFY(QFile::remove(path("gone.pdf")));
        QTRY_VERIFY((QFile::remove(path("other.pdf")), add("other.pdf"), created("other.pdf") > before[1]));
        for (int row = 0; row < 2; ++row) {
            QVERIFY(before[row].isValid());
            QCOMPARE(model.index(row, 2).data().toDateTime(), before[row]);
        }
    }

    void foldersThatAreNone()
    {
        for (const bool isFile : {false, true}) {
            add("a.pdf");
            m_model->slotUpdate();
            QCOMPARE(m_model->rowCount(), 1);
            QVERIFY(QDir(folder()).removeRecursively());
            if (isFile)
                writeFile(folder(), "");
            m_model->slotUpdate();
            QCOMPARE(m_model->rowCount(), 0);
            QVERIFY(deleteAll());
            QVERIFY(!QDir(folder()).exists()); // nor was it made
            QVERIFY(isFile || QDir().mkpath(folder()));
        }
    }

    void actions()
    {
        add("a.pdf");
        // without "New Fax" the first is "View", and none is what stands before it
        const char* const signalNames[] = {"", "new", "view", "remove", "", ""};
        for (int i = 0; i < 10; ++i) {
            const bool newFaxAction = i < 5;
            const int clicked = i % 5 - 1;
            const char* const signal = signalNames[clicked + (newFaxAction ? 1 : 2)];
            Model model(*m_converter, newFaxAction);
            model.slotUpdate();
            const QModelIndex index = model.index(0, 3);
            auto item = index.data().value<ActionBarItem>();
            QVERIFY(item.spacing() == 10 && item.margin() == 10);
            QString texts;
            for (const auto& action : item.actions())
                texts += action.text + QLatin1Char('|');
            QCOMPARE(texts, newFaxAction ? s("New Fax|View|Delete|") : s("View|Delete|"));

            QString heard;
            connect(&model, &PrintCaptureModelBase::signalNewFax, this,
                    [&](const QString& file, const QString& name) { heard += s("new") + file + name; });
            connect(&model, &PrintCaptureModelBase::signalView, this,
                    [&](const QFileInfo& file) { heard += s("view") + file.filePath(); });
            connect(&model, &PrintCaptureModelBase::removeEntry, this,
                    [&](const QFileInfo& file) { heard += s("remove") + file.filePath(); });
            item.setClickedAction(clicked);
            const QVariant value = QVariant::fromValue(item);
            QVERIFY(!model.setData(QModelIndex(), value) && !model.setData(index, value, Qt::DisplayRole) &&
                    !model.setData(index, s("0")));
            QCOMPARE(heard, QString());
            QCOMPARE(model.setData(index, value), *signal == 'n' || *signal == 'v');
            QCOMPARE(heard,
                     s(signal) + (*signal ? path("a.pdf") : QString()) + s(*signal == 'n' ? "a.pdf" : ""));
            QCOMPARE(names(), list("a.pdf")); // the model asks, and deletes nothing
        }
    }

    void clickMayRefresh()
    {
        add("a.pdf");
        m_model->slotUpdate();
        QString name;
        const auto clicked = &PrintCaptureModelBase::signalNewFax;
        connect(m_model.get(), clicked, [this] { QFile::remove(path("a.pdf")); });
        connect(m_model.get(), clicked, m_model.get(), &Model::slotUpdate);
        connect(m_model.get(), clicked, [&](const QString&, const QString& document) { name = document; });
        ActionBarItem item;
        item.setClickedAction(0);
        QVERIFY(m_model->setData(m_model->index(0, 3), QVariant::fromValue(item)));
        QCOMPARE(name, s("a.pdf"));
        QCOMPARE(m_model->rowCount(), 0);
    }

    void removeByRow()
    {
        add("a.pdf b.pdf c.pdf d.pdf");
        m_model->slotUpdate();
        m_model->badCompanions = list("b.pdf");
        QCOMPARE(m_model->removePrintCapture(0), true);
        QCOMPARE(m_model->removeRows(1, 2), false);
        QCOMPARE(m_model->asked, list("a.pdf b.pdf c.pdf"));
        QCOMPARE(m_model->removeRows(3, 0), true);
        QCOMPARE(names(), list("d.pdf"));
        QCOMPARE(m_model->rowCount(), 4); // the caller refreshes
        QVERIFY(m_log->messages(s("WARNING")).isEmpty());

        // already gone: logged, and true all the same
        QCOMPARE(m_model->removePrintCapture(2), true);
        QCOMPARE(m_log->messages(s("WARNING")),
                 QStringList{s("printcapturemodelbase.cpp Can't delete file ") + path("c.pdf")});

        for (int row : {-1, 4}) {
            try {
                m_model->removeRows(row, 1);
                QFAIL("no error");
            } catch (const std::out_of_range& error) {
                QCOMPARE(error.what(), "invalid vector<T> subscript");
            }
        }
    }

    void removeByFile()
    {
        add("a.pdf b.pdf");
        m_model->slotUpdate();
        const QAbstractItemModelTester tester(m_model.get(),
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(!m_model->removePrintCapture(QFileInfo(s("a.pdf")))); // another path
        QVERIFY(!m_model->removePrintCapture(QFileInfo(path("A.pdf"))));
        QSignalSpy removed(m_model.get(), &QAbstractItemModel::rowsRemoved);
        QVERIFY(m_model->removePrintCapture(QFileInfo(path("b.pdf"))));
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.first().at(1).toInt(), 1);
        QCOMPARE(m_model->rowCount(), 1);
        QCOMPARE(names(), list("a.pdf"));
        m_model->badCompanions = list("a.pdf");
        QVERIFY(!m_model->removePrintCapture(QFileInfo(path("a.pdf"))));
        QCOMPARE(m_model->rowCount(), 0);
    }

    void removeWhatStays()
    {
        // A folder cannot be deleted as a file. The removal is announced and the refresh inside finds the
        // document again: the tester, which counts rows, reports that.
        QVERIFY(QDir().mkpath(path("a.pdf")));
        add("b.pdf b.TIF");
        m_model->slotUpdate();
        {
            const QAbstractItemModelTester tester(m_model.get(),
                                                  QAbstractItemModelTester::FailureReportingMode::Warning);
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(s("FAIL! Compared values are not the same")));
            QVERIFY(m_model->removePrintCapture(QFileInfo(path("a.pdf"))));
        }
        QCOMPARE(m_model->rowCount(), 2);
        QCOMPARE(m_log->messages(s("WARNING")).size(), 1); // logged only
        QVERIFY(!deleteAll());
        QCOMPARE(m_model->rowCount(), 1);
    }

    void removeAll()
    {
        QThread* thread = nullptr;
        int rowsThen = -1;
        connect(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete, this, [&] {
            thread = QThread::currentThread();
            rowsThen = m_model->rowCount();
        });
        const std::tuple<const char*, bool, const char*> folders[] = {
            {"", true, ""},
            {"a.pdf a.TIF b.c.pdf b.c.TIF", true, ""},
            {"a.pdf b.pdf b.TIF", false, ""}, // one without a companion
#ifdef Q_OS_LINUX
            {"a.pdf a.tif", false, "a.tif"},
#endif
            {"a.pdf a.TIF x.TIF y.txt", true, "x.TIF y.txt"}, // what is no document stays
        };
        for (const auto& [files, result, left] : folders) {
            for (const QString& old : names())
                QVERIFY(QFile::remove(path(old)));
            add(files);
            m_model->slotUpdate();
            QCOMPARE(deleteAll(), result);
            QCOMPARE(thread, QThread::currentThread());
            QCOMPARE(rowsThen, 0);
            QCOMPARE(names(), list(left));
        }
    }
};

QTEST_MAIN(CaptureModelTest)
#include "tst_capturemodel.moc"
