#include "actionbarheaderview.h"
#include "actionbaritem.h"
#include "capturekit.h"
#include "cursoroverridehelper.h"

#include <QDesktopServices>
#include <QHeaderView>
#include <QLabel>
#include <QSettings>
#include <QSortFilterProxyModel>

namespace {

/// Access to what subclasses see.
class Model : public PrintCaptureModelBase
{
public:
    using PrintCaptureModelBase::PrintCaptureModelBase;
    using PrintCaptureModelBase::setPages;
};

class Window : public PrintCaptureBase
{
public:
    using PrintCaptureBase::hidePagesColumn, PrintCaptureBase::hidePrinterStatus;
    using PrintCaptureBase::PrintCaptureBase;
};

/// The desktop's opener of files, in place of programs.
class Opener : public QObject
{
    Q_OBJECT
public:
    Opener() { QDesktopServices::setUrlHandler(s("file"), this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler(s("file")); }
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }
};

} // namespace

/// The window of captured print jobs, as users see and click it.
class CaptureWindowTest : public CaptureTest
{
    Q_OBJECT

    /// Opens the window over what the folder holds.
    Window* open(bool newFaxAction = true)
    {
        if (!newFaxAction)
            m_model = std::make_unique<Model>(*m_converter, false);
        m_model->slotUpdate();
        m_window = new Window(m_model.get(), *m_converter, *m_settings, true);
        m_table = tableOf(*m_window);
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window))
            qFatal("The window does not appear");
        return m_window;
    }
    void click(int row, int action) { clickAction(*m_window, row, action); }
    void click(const char* button) { clickButton(*m_window, button); }
    QString textOf(const char* label) const { return m_window->findChild<QLabel*>(s(label))->text(); }
    bool isEnabled(const char* widget) const { return m_window->findChild<QWidget*>(s(widget))->isEnabled(); }
    QStringList shownTexts() const
    {
        QStringList texts;
        for (int row = 0; row < m_table->model()->rowCount(); ++row)
            texts.append(m_table->model()->index(row, 0).data().toString());
        return texts;
    }

    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<Model> m_model;
    QPointer<Window> m_window;
    QTableView* m_table{nullptr};

private Q_SLOTS:
    void init()
    {
        newFolder();
        m_settings = std::make_unique<QSettings>(m_appData->filePath(s("window.ini")), QSettings::IniFormat);
        m_model = std::make_unique<Model>(*m_converter, true);
    }
    void cleanup()
    {
        delete m_window;
        leaveFolder();
        m_model.reset();
        QVERIFY(!QApplication::overrideCursor());
    }

    void form()
    {
        open();
        QCOMPARE(m_window->windowTitle(), s("Print Captures"));
        QVERIFY(m_window->isModal() && !(m_window->windowFlags() & Qt::WindowContextHelpButtonHint));
        QCOMPARE(textOf("label") + textOf("status"), s("Status:Idle"));
        QCOMPARE(m_table->focusPolicy(), Qt::NoFocus);
        const auto* header = qobject_cast<ActionBarHeaderView*>(m_table->horizontalHeader());
        QVERIFY(header); // the library's class, by a cast in another module
        QCOMPARE(header->actionColumn(), 3);
        QVERIFY(header->isSortIndicatorShown() && header->stretchLastSection() &&
                !header->highlightSections() && header->property("showSortIndicator").toBool());
        QCOMPARE(header->sectionSize(1), qMax(50, header->minimumSectionSize())); // more with a large font
        QCOMPARE(header->sectionSize(2), 150);
        for (int column = 0; column < 4; ++column)
            QCOMPARE(header->sectionResizeMode(column), column ? QHeaderView::Fixed : QHeaderView::Stretch);
        QVERIFY(!isEnabled("pushButtonDeleteAll")); // nothing there
    }

    void newestFirst()
    {
        // time stamps of files are coarse: go on until the times differ
        add("b-oldest.pdf");
        for (const auto& [younger, older] :
             {std::make_pair("c-middle.pdf", "b-oldest.pdf"), std::make_pair("a-newest.pdf", "c-middle.pdf")})
            QTRY_VERIFY((QFile::remove(path(younger)), add(younger), created(younger) > created(older)));
        m_converter->setFormat(s("ss.zzz 'Z'"));
        open();
        QCOMPARE(shownTexts(), list("a-newest.pdf c-middle.pdf b-oldest.pdf"));
        QCOMPARE(m_table->model()->index(0, 2).data().toString(),
                 m_converter->toText(created("a-newest.pdf")));
        QCOMPARE(m_table->horizontalHeader()->sortIndicatorSection(), 2);
        QCOMPARE(m_table->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
        // filters look at the shown time, in whatever case
        qobject_cast<QSortFilterProxyModel*>(m_table->model())->setFilterFixedString(s("z"));
        QCOMPARE(shownTexts().size(), 3);
    }

    void oddNames()
    {
        QStringList odd{s("\u202Efdp.evil.pdf"), QString(240, QLatin1Char('n')) + s(".pdf"),
                        s("%1 & %2 &lt;.pdf")};
#ifndef Q_OS_WIN // which has no such names
        odd += {s("<b>bold.pdf"), s("two\nlines.pdf")};
#endif
        add(odd);
        open();
        m_window->grab(); // paints them all
        Opener opener;
        for (int row = 0; row < odd.size(); ++row)
            click(row, 1);
        QCOMPARE(opener.opened.size(), odd.size());
        for (const QString& name : odd) {
            QVERIFY(shownTexts().contains(name));
            QVERIFY(opener.opened.contains(QUrl::fromLocalFile(path(name))));
        }
        while (m_table->model()->rowCount() > 0) {
            const BoxAnswer yes(QMessageBox::Yes);
            click(0, 2);
            QVERIFY(!yes.said.isEmpty());
        }
        QVERIFY(names().isEmpty());
    }

    void view()
    {
        add(QStringList{s("a b.pdf")});
        for (const bool newFaxAction : {true, false}) { // without "New Fax", "View" is the first
            delete m_window;
            open(newFaxAction);
            const Opener opener;
            click(0, newFaxAction);
            QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(path("a b.pdf"))});
        }
        // without a program: this platform opens no files
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("does not support")));
        const BoxAnswer answer(QMessageBox::Ok);
        click(0, 0);
        QCOMPARE(
            answer.said,
            s("complains|Quendra Client|This file does not have a program associated with it and cannot be "
              "opened. Install a program to open TIFF files, or create a file association for TIFF files."));
        QCOMPARE(m_log->messages(s("ERROR")),
                 QStringList{s("printcapturebase.cpp Failed to open file: ") + path("a b.pdf")});
    }

    void deleteOne()
    {
        add("a.pdf b.pdf c.pdf");
        open();
        m_table->sortByColumn(0, Qt::AscendingOrder);
        const auto check = [this](int row, QMessageBox::StandardButton answer, const char* left) {
            const BoxAnswer box(answer);
            click(row, 2);
            QCOMPARE(box.said, s("asks|Quindra Client|Are you sure you want to delete the document?"));
            QCOMPARE(names(), list(left));
            QCOMPARE(shownTexts(), names());
            QCOMPARE(isEnabled("pushButtonDeleteAll"), !names().isEmpty());
        };
        for (const auto& [row, left] : {std::make_pair(1, "a.pdf c.pdf"), {0, "c.pdf"}, {0, ""}}) {
            const QByteArray before = names().join(QLatin1Char(' ')).toUtf8();
            check(row, QMessageBox::No, before);
            check(row, QMessageBox::NoButton, before); // Escape
            // Qt's proxy notices that the model was reset inside
            if (*left)
                QTest::ignoreMessage(QtWarningMsg,
                                     "QSortFilterProxyModel: inconsistent changes reported by source model");
            check(row, QMessageBox::Yes, left);
        }
    }

    void deleteAllAsks()
    {
        add("a.pdf b.pdf");
        open();
        {
            const BoxAnswer no(QMessageBox::No);
            click("pushButtonDeleteAll");
            QCOMPARE(no.said,
                     s("asks|Quendra Client|Are you sure you want to delete all the print captures?"));
        }
        QVERIFY(names().size() == 2 && m_table->isEnabled() && !QApplication::overrideCursor());

        const BoxAnswer yes(QMessageBox::Yes);
        click("pushButtonDeleteAll");
        // the user has answered; the pool's result has to pass the event loop first
        QVERIFY(!m_table->isEnabled() && !isEnabled("pushButtonDeleteAll"));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterIdle);
        QVERIFY(!isEnabled("pushButtonDeleteAll"));
        QTRY_VERIFY(m_table->isEnabled() && !QApplication::overrideCursor());
        QVERIFY(names().isEmpty() && !isEnabled("pushButtonDeleteAll"));
        add("c.pdf");
        m_window->slotUpdate();
        QVERIFY(isEnabled("pushButtonDeleteAll"));
    }

    void closedWhileDeleting()
    {
        add("a.pdf");
        open();
        const BoxAnswer yes(QMessageBox::Yes);
        click("pushButtonDeleteAll");
        QVERIFY(QApplication::overrideCursor());
        m_window->close();
        QTRY_VERIFY(!m_window);
        QVERIFY(!QApplication::overrideCursor());
        QTRY_COMPARE(m_model->rowCount(), 0);
        add("b.pdf");
        m_model->deleteAll();
        m_model.reset(); // and without its model the pool goes on
        QThreadPool::globalInstance()->waitForDone();
        QVERIFY(names().isEmpty());
    }

    void newFax()
    {
        add("a.pdf");
        open();
        QSignalSpy wanted(m_window, &PrintCaptureBase::signalSendNewFax);
        click(0, 0);
        QCOMPARE(wanted, (QList<QVariantList>{{path("a.pdf"), s("a.pdf")}}));
        QTRY_VERIFY(!m_window);
        open();
        connect(m_window, &PrintCaptureBase::signalSendNewFax, this, [this] { delete m_window; });
        m_window->slotNewFax(path("a.pdf"), s("a.pdf"));
        QVERIFY(!m_window);
    }

    void missingFiles()
    {
#ifdef Q_OS_WIN
        const QString name = s("&lt;%1.pdf");
#else
        const QString name = s("<b>%1.pdf");
#endif
        add(QStringList{name});
        open();
        QVERIFY(QFile::remove(path(name)));
        QSignalSpy wanted(m_window, &PrintCaptureBase::signalSendNewFax);
        for (const auto& [action, text] :
             {std::make_pair(0, "Failed to create new fax."), std::make_pair(1, "Failed to open file.")}) {
            const BoxAnswer ok(QMessageBox::Ok);
            click(0, action);
            QCOMPARE(ok.said, s("complains|Quendra Client|") + s(text) +
                                  s("\r\nThe file %1 cannot be found.").arg(path(name)));
            QVERIFY(wanted.isEmpty() && m_window && m_window->isVisible());
        }
        // deleting a file that is gone brings the table up to date again
        const BoxAnswer yes(QMessageBox::Yes);
        click(0, 2);
        QCOMPARE(m_table->model()->rowCount(), 0);
    }

    void keysAndClose()
    {
        add("a.pdf");
        open();
        QTest::keyClick(m_window, Qt::Key_Escape);
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(m_window, &escape);
        QVERIFY(!escape.isAccepted());
        {
            const BoxAnswer no(QMessageBox::No);
            QTest::keyClick(m_window->findChild<QPushButton*>(s("pushButtonDeleteAll")), Qt::Key_Return);
            QVERIFY(!no.said.isEmpty());
        }
        QVERIFY(m_window->isVisible() && names() == list("a.pdf"));
        delete m_window;
        open();
        // Enter presses the button that has the focus, which at first is "Close"
        QCOMPARE(m_window->focusWidget()->objectName(), s("pushButtonClose"));
        QTest::keyClick(m_window, Qt::Key_Return);
        QTRY_VERIFY(!m_window);
        open();
        QTimer::singleShot(0, m_window, &QWidget::close); // by the window's frame
        QCOMPARE(m_window->exec(), int(QDialog::Rejected));
        QTRY_VERIFY(!m_window);
    }

    void geometry()
    {
        open();
        m_window->setGeometry(40, 60, 700, 333);
        QCoreApplication::processEvents();
        const QRect wanted = m_window->geometry();
        click("pushButtonClose");
        QTRY_VERIFY(!m_window);
        const QString file = m_settings->fileName();
        m_settings = std::make_unique<QSettings>(file, QSettings::IniFormat); // a later run of the program
        QCOMPARE(m_settings->allKeys(), list("Settings/PrintCapturesWindow/geometry"));
        open();
        QCOMPARE(m_window->geometry(), wanted);
        QCOMPARE(m_settings->group(), QString()); // the groups were left
        delete m_window;
        m_settings->setValue(s("Settings/PrintCapturesWindow/geometry"), QByteArray("nonsense"));
        open();
        QVERIFY(m_window->width() >= 650);
    }

    void printerStatus()
    {
        open();
        const auto isEnabledAfter = [this](int status) {
            m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus(status));
            return isEnabled("pushButtonDeleteAll");
        };
        QVERIFY(!isEnabledAfter(2)); // there is nothing
        add("a.pdf");
        m_window->slotUpdate();
        for (int idle : {2, 5, 6}) {
            for (int status : {0, 3, 4, 7, -1, idle}) // none of the others changes anything
                QVERIFY(isEnabledAfter(status));
            for (int status : {1, 3, 4, 0, 7})
                QVERIFY(!isEnabledAfter(status));
            m_model->slotUpdate();
            QVERIFY(!isEnabled("pushButtonDeleteAll") && isEnabledAfter(idle));
        }
    }

    void sortByTitles()
    {
        add("b.pdf C.pdf a.pdf");
        open();
        const auto shownAfter = [this](int clickedTitle) {
            QHeaderView* header = m_table->horizontalHeader();
            const int x =
                header->sectionViewportPosition(clickedTitle) + header->sectionSize(clickedTitle) / 2;
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, 5));
            return shownTexts();
        };
        const QStringList ascending = list("a.pdf b.pdf C.pdf");
        QCOMPARE(shownAfter(0), ascending);
        QCOMPARE(shownAfter(3), ascending);
        QCOMPARE(shownAfter(0), QStringList(ascending.crbegin(), ascending.crend()));
        QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
        for (int pages : {7, 7}) {
            m_model->setPages(2, pages); // C.pdf
            m_model->setPages(0, 9);     // a.pdf
            m_model->setPages(-1, pages);
            m_model->setPages(3, pages);
        }
        QCOMPARE(changed.count(), 2);
        QCOMPARE(shownAfter(1), list("b.pdf C.pdf a.pdf"));
    }

    void forSubclasses()
    {
        open();
        m_window->hidePagesColumn();
        QVERIFY(m_table->isColumnHidden(1));
        QCOMPARE(m_table->columnWidth(2), 200);
        m_window->hidePrinterStatus();
        for (const char* name : {"label", "status"})
            QVERIFY(!m_window->findChild<QLabel*>(QLatin1String(name))->isVisible());
        CursorOverrideHelper outer;
        {
            const CursorOverrideHelper inner;
        }
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    }

    void icons()
    {
        for (const char* name : {"new-fax-action-icon", "view-icon", "abort", "folder"}) {
            for (int size : {16, 24, 32, 64}) {
                const QImage image = QIcon(s(":/icons/") + s(name)).pixmap(size, size).toImage();
                QCOMPARE(image.size(), QSize(size, size)); // drawn for the size, not scaled up
                int inked = 0;
                int solid = 0;
                for (int pixel = 0; pixel < size * size; ++pixel) {
                    const QColor color = image.pixelColor(pixel % size, pixel / size);
                    inked += color.alpha() > 0;
                    solid += color.alpha() == 255;
                    // seen on white and on the grey of dark palettes
                    QVERIFY2(color.alpha() < 255 || qAbs(color.lightness() - 127) < 70, name);
                }
                QVERIFY(inked > size * size / 8);
                QVERIFY(solid * 3 >= inked); // lines on the grid of pixels
            }
        }
    }
};

QTEST_MAIN(CaptureWindowTest)
#include "tst_capturewindow.moc"
