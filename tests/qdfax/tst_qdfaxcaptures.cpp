// The captured print jobs in qdfax: the commands as users type them, the window and its dialogue as users
// click.

#include "capturekit.h"
#include "capturemodel.h"
#include "capturewindow.h"
#include "command.h"
#include "faxdialog.h"
#include "folderwatch.h"
#include "qdfaxprogram.h"
#include "simwire.h"
#include "text.h"

#include <QBuffer>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPdfWriter>
#include <QScrollBar>
#include <QSettings>

#include <functional>

namespace {

QByteArray pdf(int pages)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    QPainter painter(&writer);
    for (int page = 1; page < pages; ++page)
        writer.newPage();
    painter.end();
    return buffer.data();
}

/// A PDF that asks for a password.
QByteArray lockedPdf()
{
    return "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
           "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
           "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>endobj\n"
           "4 0 obj<</Filter/Standard/V 1/R 2/P -4/O<" +
           QByteArray(64, '1') + ">/U<" + QByteArray(64, '2') +
           ">>>endobj\ntrailer<</Root 1 0 R/Size 5/Encrypt 4 0 R/ID[<00><00>]>>\n%%EOF\n";
}

template <typename T>
T* visible()
{
    return qobject_cast<T*>(QApplication::activeModalWidget());
}

/// Does one thing after the other, each as soon as it can be done, while the program runs its own event
/// loops.
class User : public QObject
{
public:
    explicit User(const QVector<std::function<bool()>>& steps)
        : m_steps(steps)
    {
        m_timer.start(5);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            if (m_done < m_steps.size() && m_steps.at(m_done)())
                ++m_done;
        });
    }
    bool isDone() const { return m_done == m_steps.size(); }

private:
    QVector<std::function<bool()>> m_steps;
    int m_done{0};
    QTimer m_timer;
};

/// The window over what the folder holds.
struct Shown
{
    Shown()
    {
        model.slotUpdate();
        window = new CaptureWindow(model, converter, settings);
        window->show();
    }
    ~Shown() { delete window; }
    Q_DISABLE_COPY(Shown)

    const DateTimeConverter converter;
    QSettings settings{qEnvironmentVariable("APPDATA") + s("/test.ini"), QSettings::IniFormat};
    CaptureModel model{converter, true};
    QPointer<CaptureWindow> window;
};

} // namespace

class TestQdfaxCaptures : public CaptureTest
{
    Q_OBJECT

    static void start(Program& program, const char* line)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(s(name));
        program.begin(QProcess::splitCommand(s(line)), QDir::currentPath(), environment);
    }
    /// Runs the program without a display.
    static Result run(const char* line)
    {
        Program program;
        start(program, line);
        return program.finish();
    }
    /// Runs a command in this process, with a display.
    static int runHere(const char* line)
    {
        return runCommandLine(QProcess::splitCommand(s("qdfax ") + s(line)));
    }

    /// The exit status of a window in which a user takes these steps; -1 when not all of them.
    static int runWindow(const QVector<std::function<bool()>>& steps)
    {
        const User user(steps);
        const int status = runHere("captures");
        return user.isDone() ? status : -1;
    }
    static bool clickAction(int row, int action)
    {
        const auto* window = visible<CaptureWindow>();
        if (window)
            ::clickAction(*window, row, action);
        return window;
    }

    static FaxDialog* dialog() { return visible<FaxDialog>(); }
    static QPushButton* sendButton() { return dialog()->findChild<QPushButton*>(s("send")); }
    static bool says(const char* text)
    {
        return dialog()->findChild<QLabel*>(s("text"))->text().contains(s(text));
    }
    static bool type(const char* field, const char* text)
    {
        auto* edit = dialog()->findChild<QLineEdit*>(s(field));
        edit->clear();
        QTest::keyClicks(edit, s(text));
        return true;
    }
    /// The last step of a user.
    static bool closeWindow() { return visible<CaptureWindow>() && visible<CaptureWindow>()->close(); }

private Q_SLOTS:
    void initTestCase()
    {
        newFolder();   // for all tests: the program asks for it once
        m_log.reset(); // which the program keeps itself
        qputenv("QDFAX_PASSWORD", "secret");
        Text::useLanguageOfUser();
    }

    void init()
    {
        QVERIFY(QDir(folder()).removeRecursively());
        QVERIFY(QDir().mkpath(folder()));
    }

    void counting()
    {
#ifndef QDFAX_WITH_POPPLER
        QSKIP("This build has no reader of PDFs");
#endif
        writeFile(path("a 12.pdf"), pdf(12));
        writeFile(path("b none.pdf"), "nothing of the kind");
        writeFile(path("c cut.pdf"), pdf(3).left(200));
        writeFile(path("d empty.pdf"), "");
        QVERIFY(QDir().mkpath(path("e folder.pdf")));
        writeFile(path("f 1.pdf"), pdf(1));
        writeFile(path("g locked.pdf"), lockedPdf());
        CaptureModel model(*m_converter, true);
        const auto pages = [&model] {
            model.slotUpdate();
            QVector<int> pages;
            for (const auto& document : model.countedDocuments())
                pages.append(document.pages);
            return pages;
        };
        QCOMPARE(pages(), (QVector<int>{12, 0, 0, 0, 0, 1, 0}));
        // known counts stay over a refresh, and a document that was replaced is counted again
        model.slotUpdate();
        QCOMPARE(model.index(0, 1).data().toInt(), 12);
        writeFile(path("f 1.pdf"), pdf(4));
        QCOMPARE(pages(), (QVector<int>{12, 0, 0, 0, 0, 4, 0}));

        for (int i = 0; i < 20; ++i) // refreshes and the end come at any time
            writeFile(path("x%1.pdf").arg(i), pdf(2));
        CaptureModel hasty(*m_converter, true);
        hasty.slotUpdate();
        QFile::remove(path("x1.pdf"));
        hasty.slotUpdate();
        QCOMPARE(hasty.countedDocuments().size(), 26);
        CaptureModel gone(*m_converter, true);
        gone.slotUpdate();
    }

    void companions()
    {
        for (const char* name : {"a.pdf", "b.pdf", "b.TIF", "c.pdf", "d.pdf", "d.TIF"})
            writeFile(path(name), "x");
        QVERIFY(QDir().mkpath(path("c.TIF")));
        QFile older(path("d.TIF"));
        QVERIFY(older.open(QIODevice::ReadWrite));
        QVERIFY(older.setFileTime(QDateTime::currentDateTime().addDays(-1), QFile::FileModificationTime));
        CaptureModel model(*m_converter, true);
        const auto texts = [&] {
            model.slotUpdate();
            QStringList texts;
            for (int row = 0; row < 4; ++row)
                texts.append(model.index(row, 1).data(Qt::ToolTipRole).toString());
            return texts;
        };
        QCOMPARE(texts(), (QStringList{QString(), s("TIFF, 1 B"), s("TIFF that cannot be read"),
                                       s("TIFF, 1 B, older than the document")}));
        QCOMPARE(model.index(1, 0).data(Qt::ToolTipRole).toString(), s("b.pdf")); // nothing but the name
        QVERIFY(captureSummary(model).endsWith(s("3 with a TIFF file")));
        const auto pictureOf = [&](int row) {
            return model.index(row, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).toImage();
        };
        QVERIFY(!pictureOf(0).isNull() && pictureOf(0) != pictureOf(1));
        older.close();
        writeFile(path("d.TIF"), "newer");
        QCOMPARE(texts().at(3), s("TIFF, 5 B"));

        QVERIFY(model.removePrintCapture(1)); // both go
        QVERIFY(!QFile::exists(path("b.pdf")) && !QFile::exists(path("b.TIF")));
        QVERIFY(!model.removePrintCapture(2)); // a folder is no file
    }

    void folderThatComesAndGoes()
    {
        QVERIFY(QDir(folder()).removeRecursively());
        FolderWatch watch(folder());
        QSignalSpy changed(&watch, &FolderWatch::changed);
        const auto tells = [&changed](bool isDone) {
            changed.clear();
            return isDone && changed.wait();
        };
        const auto remove = [] { return QDir(folder()).removeRecursively(); };
        const auto write = [](const char* name, const char* content) {
            return writeFile(path(name), content), true;
        };
        for (int i = 0; i < 2; ++i) {
            QVERIFY(tells(QDir().mkpath(folder())));
            QVERIFY(tells(write("a.pdf", "x")));
            QFileInfo known(path("a.pdf"));
            known.size();
            watch.setFiles({known});
            QVERIFY(tells(write("a.pdf", "xyz"))); // in place: the folder does not change
            watch.setFiles({});
            write("a.pdf", "xy");
            watch.setFiles({known}); // it was another one
            QVERIFY(tells(true));
            const QString other = folder() + QString::number(i);
            QVERIFY(tells(QDir().rename(folder(), other) &&
                          QDir().mkpath(folder()))); // another one of the same name
            QVERIFY(tells(write("b.pdf", "x")));
            QVERIFY(tells(remove()));
            QVERIFY(tells(QDir().rename(other, folder())));
            QVERIFY(tells(remove()));
        }
    }

    void fileThatIsBeingWritten()
    {
        writeFile(path("a.pdf"), "x");
        FolderWatch watch(folder());
        watch.setFiles({QFileInfo(path("a.pdf"))});
        QSignalSpy changed(&watch, &FolderWatch::changed);
        int writes = 0;
        QTimer writer;
        writer.callOnTimeout([&] { writeFile(path("a.pdf"), QByteArray(++writes, 'x')); });
        writer.start(20);
        QTRY_VERIFY_WITH_TIMEOUT(writes >= 100, 30000);
        writer.stop();
        QVERIFY2(changed.count() <= 3, "not while it is written, but for a machine that is busy for a while");
        QVERIFY(changed.wait());
    }

    void filesThatCannotBeWatched()
    {
        QVERIFY(QDir().mkpath(path("folder.pdf")));
        QFileInfoList files{QFileInfo(path("folder.pdf")), QFileInfo(path("missing.pdf"))};
        for (int i = 0; i <= FolderWatch::mostFiles; ++i) {
            writeFile(path("x%1.pdf").arg(i), "x");
            files.append(QFileInfo(path("x%1.pdf").arg(i)));
        }
        FolderWatch watch(folder());
        const auto* watcher = watch.findChild<QFileSystemWatcher*>();
        for (int i = 0; i < 2; ++i) {
            watch.setFiles(files);
            QCOMPARE(watcher->files().size(), FolderWatch::mostFiles);
            QCOMPARE(watcher->directories(), (QStringList{folder(), QFileInfo(folder()).path()}));
        }
        watch.setFiles(files.mid(2, 1));
        QCOMPARE(watcher->files(), QStringList{path("x0.pdf")});
    }

    void windowFollowsTheFolder()
    {
        Shown shown;
        QPointer<CaptureWindow>& window = shown.window;
        const QLabel* summary = window->findChildren<QLabel*>().last();
        QVERIFY(summary->isVisible() && !window->findChild<QWidget*>(s("status"))->isVisible());
        QCOMPARE(summary->text(), s("No documents"));
        writeFile(path("a.TIF"), "x");
        for (int pages : {2, 3}) { // the second time in place
            writeFile(path("a.pdf"), pdf(pages));
            QTRY_COMPARE(tableOf(*window)->model()->rowCount(), 1);
#ifdef QDFAX_WITH_POPPLER
            QTRY_COMPARE(summary->text(), s("1 document, %1 pages, 1 with a TIFF file").arg(pages));
#endif
        }
        writeFile(path("a.TIF"), "longer");
        QTRY_COMPARE(shown.model.index(0, 1).data(Qt::ToolTipRole).toString(), s("TIFF, 6 B"));
        QFile::remove(path("a.pdf"));
        QTRY_COMPARE(summary->text(), s("No documents"));
        QVERIFY(!window->findChild<QWidget*>(s("pushButtonDeleteAll"))->isEnabled());
        window->close();
        QTRY_VERIFY(!window);
    }

    void refreshKeepsThePlace()
    {
        for (int i = 10; i < 60; ++i)
            writeFile(path("x%1.pdf").arg(i), "x");
        const char* broken = "x25 line\nbreak.pdf";
        writeFile(path(broken), "x");
        Shown shown;
        CaptureWindow& window = *shown.window;
        QTableView* table = tableOf(window);
        table->sortByColumn(0, Qt::AscendingOrder);
        const auto rowOf = [&](const char* name) {
            return table->model()
                ->match(table->model()->index(0, 0), Qt::ToolTipRole, s(name), 1, {})
                .value(0);
        };
        QVERIFY(!rowOf(broken).data().toString().contains(QLatin1Char('\n'))); // all of it in one line
        table->selectRow(rowOf("x50.pdf").row());
        table->selectionModel()->setCurrentIndex(rowOf(broken).siblingAtColumn(2), {});
        table->verticalScrollBar()->setValue(3); // neither is in view
        writeFile(path("x00.pdf"), "x");
        QTRY_COMPARE(table->model()->rowCount(), 52);
        QCOMPARE(table->selectionModel()->selectedRows(), QModelIndexList{rowOf("x50.pdf")});
        QCOMPARE(table->currentIndex(), rowOf(broken).siblingAtColumn(2));
        QCOMPARE(table->verticalScrollBar()->value(), 3);
        QFile::remove(path("x50.pdf"));
        QTRY_COMPARE(table->model()->rowCount(), 51);
        QVERIFY(!table->selectionModel()->hasSelection());
    }

    void refreshLosesNoClick()
    {
        writeFile(path("a.pdf"), "x");
        Shown shown;
        CaptureWindow& window = *shown.window;
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTableView* table = tableOf(window);
        QSignalSpy read(&shown.model, &QAbstractItemModel::modelReset);
        auto* watch = window.findChild<FolderWatch*>();
        const auto* delegate = qobject_cast<ActionBarItemDelegate*>(table->itemDelegate());
        const QPoint remove = delegate->actionRect(table->model()->index(0, 3), 2).center();
        const QPoint inWindow = table->viewport()->mapTo(&window, remove);
        {
            const BoxAnswer no(QMessageBox::No);
            QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, inWindow);
            Q_EMIT watch->changed();
            QCOMPARE(read.count(), 0);
            QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, inWindow);
            QTRY_VERIFY(!no.said.isEmpty());
        }
        QTRY_COMPARE(read.count(), 1); // what was held back
        const BoxAnswer no(QMessageBox::No);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, remove);
        Q_EMIT watch->changed(); // before the click is written
        QVERIFY(!no.said.isEmpty());
        QCOMPARE(read.count(), 2);
    }

    void deleteTenThousand()
    {
        addManyCaptures();
        Shown shown;
        QVERIFY(QTest::qWaitForWindowExposed(shown.window));
        // however often the folder is said to change: it is read at the end, and for what is told after that
        QTimer often;
        connect(&often, &QTimer::timeout, shown.window, [&shown] {
            if (!tableOf(*shown.window)->isEnabled())
                Q_EMIT shown.window->findChild<FolderWatch*>()->changed();
        });
        often.start(1);
        deleteManyCaptures(*shown.window, shown.model, 2);
    }

    void commands()
    {
        for (const char* name : {"a.pdf", "b.pdf", "c.pdf", "c.TIF", "1.pdf", "<b>\n\x1b[31m.pdf"})
            writeFile(path(name), "x");
        const Result table = run("captures list");
        CHECK_RUN(table, 0);
        QCOMPARE(table.out.count('\n'), 6);
        QVERIFY(!table.out.contains('\x1b'));
        const Result listed = run("captures list --json");
        QCOMPARE(listed.array().size(), 5);
        for (int i = 0; i < 5; ++i) {
            QVERIFY(QFile::exists(listed.value(i, "file").toString()));
            const bool hasTiff = listed.value(i, "name") == s("c.pdf");
            QCOMPARE(listed.value(i, "tiff").toString(), s(hasTiff ? "present" : "none"));
        }

        CHECK_RUN(run("captures delete a.pdf nosuch.pdf"), 9);
        QVERIFY(QFile::exists(path("a.pdf"))); // all or nothing
        QCOMPARE(run("captures delete a.pdf c.pdf a.pdf").out, QByteArray("Deleted: 2\n"));
        QVERIFY(!QFile::exists(path("c.TIF")));
        CHECK_RUN(run("captures delete 1 --json"), 0); // the newest
        CHECK_RUN(run("captures delete-all"), 1);
        QCOMPARE(names().size(), 2); // of three
        QVERIFY(QDir().mkpath(path("stays.pdf")));
        CHECK_RUN(run("captures delete-all --yes"), 11);
        QVERIFY(QDir().rmdir(path("stays.pdf")));
        for (const char* command : {"captures delete a.pdf", "captures delete-all --yes"}) {
            writeFile(path("a.pdf"), "x");
            QVERIFY(QDir().mkpath(path("a.TIF")));
            const Result result = run(command);
            CHECK_RUN(result, 11); // the companion stays
            QCOMPARE(result.out, QByteArray("Deleted: 1\n"));
        }
        QVERIFY(QDir().rmdir(path("a.TIF")));
        CHECK_RUN(run("captures delete-all --yes"), 0);
        QVERIFY(QDir().rmdir(folder()));
        CHECK_RUN(run("captures list"), 0);
        CHECK_RUN(run("captures delete-all --yes"), 0);
    }

    void commandsThatFail()
    {
        writeFile(path("a.pdf"), "x");
        for (const char* line : {"captures", "captures view a.pdf"}) // there is no display
            CHECK_RUN(run(line), 2);
        // for help none is needed, nor for saying what is wrong with a line
        for (const char* line : {"captures --help", "help captures", "help captures list"})
            CHECK_RUN(run(line), 0);
        for (const char* line : {"captures nosuch", "captures --nosuch", "captures --timeout soon",
                                 "captures view a.pdf --log-level 5", "captures list a.pdf", "captures view",
                                 "captures delete", "captures watch --rounds 0"})
            CHECK_RUN(run(line), 1);
        for (const char* line : {"captures delete 0", "captures delete 2"})
            CHECK_RUN(run(line), 9);
        QVERIFY(QFile::exists(path("a.pdf")));
    }

    void watching()
    {
        Program program;
        start(program, "captures watch --json --rounds 3");
        QByteArray out;
        const auto rounds = [&] { return (out += program.readAllStandardOutput()).count("]\n"); };
        QTRY_COMPARE_WITH_TIMEOUT(rounds(), 1, Program::longest);
        writeFile(path("a.pdf"), "x");
        QTRY_COMPARE_WITH_TIMEOUT(rounds(), 2, Program::longest);
        QVERIFY(out.contains("a.pdf"));
        QFile::remove(path("a.pdf"));
        QTRY_COMPARE_WITH_TIMEOUT(rounds(), 3, Program::longest);
        CHECK_RUN(program.finish(), 0);
    }

    void changeWhileReading()
    {
        // all of it is searched for pages, for longer than a change takes to be told
        writeFile(path("slow.pdf"), "%PDF-1.4\n");
        QVERIFY(QFile::resize(path("slow.pdf"), 40 << 20));
        bool isLost = false;
        QObject meanwhile;
        QTimer::singleShot(0, &meanwhile, [] { writeFile(path("late.pdf"), "x"); });
        QTimer::singleShot(20000, &meanwhile, [&isLost] {
            isLost = true;
            writeFile(path("another.pdf"), "x");
        });
        QCOMPARE(runHere("captures watch --json --rounds 2"), 0);
        QVERIFY(!isLost);
    }

    void newFax()
    {
        Started sim(with([this](SimOptions& options) {
            options.speed = 0;
            options.spoolDir = m_appData->filePath(s("spool"));
            options.users = {someUser("mary:secret")};
        }));
        QCOMPARE(runHere(qPrintable(s("server add %1 --login mary --default").arg(sim.address()))), 0);
        const QByteArray content = pdf(3);
        writeFile(path("offer.pdf"), content);
        int status = runWindow({
            [] { return clickAction(0, 0); },
            [] { return dialog() && !visible<CaptureWindow>() && !sendButton()->isEnabled(); },
            [] { return type("number", "no digits") && !sendButton()->isEnabled(); },
            [] { return type("number", "+49 30 55") && type("name", "Poe, Mary \\ Sons"); },
            [] {
                QTest::mouseClick(sendButton(), Qt::LeftButton); // returns when the fax is on its way
                return says("has taken the fax");
            },
            [] { return dialog()->close(); },
            closeWindow,
        });
        QCOMPARE(status, 0);
        QCOMPARE(sim.faxes().size(), 1);
        const SimFax fax = sim.faxes().at(0);
        QCOMPARE(fax.recipient.fax + fax.recipient.name, s("+49 30 55Poe, Mary \\ Sons"));
        QCOMPARE(readFile(sim.attachments(fax.id).value(0).path), content);

        sim.stop();
        const auto press = [](Qt::Key key) { return QTest::keyClick(dialog(), key), true; };
        status = runWindow({
            [] { return clickAction(0, 0); },
            [&] { return dialog() && type("number", "555") && press(Qt::Key_Return); },
            [] { return says("connection is refused") && sendButton()->isEnabled(); },
            [&] { return press(Qt::Key_Escape); },
            closeWindow,
        });
        QCOMPARE(status, 2);
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // as in qdfax
    TestQdfaxCaptures test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_qdfaxcaptures.moc"
