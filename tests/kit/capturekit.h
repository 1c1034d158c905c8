#pragma once

// Helpers for tests of the windows of captured print jobs.

#include "actionbaritemdelegate.h"
#include "datetimeconverter.h"
#include "printcapturebase.h"
#include "printcapturemodelbase.h"
#include "shorthand.h"
#include "testkit.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

#include <memory>

/// Words, with blanks between.
inline QStringList list(const char* names)
{
    return s(names).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// Base class of tests of captured print jobs: their folder and its content.
class CaptureTest : public QObject
{
protected:
    static QString folder() { return PrintCaptureModelBase::folder(); }
    static QString path(const QString& name) { return folder() + QLatin1Char('/') + name; }
    static QString path(const char* name) { return path(s(name)); }
    static QStringList names() { return QDir(folder()).entryList(QDir::Files, QDir::Name); }
    static void add(const QStringList& names)
    {
        for (const QString& name : names)
            writeFile(path(name), "%PDF-1.4\n");
    }
    static void add(const char* names) { add(list(names)); }
    /// When a document was made, as the model has it.
    static QDateTime created(const char* name)
    {
        const QFileInfo info(path(name));
        return info.birthTime().isValid() ? info.birthTime() : info.lastModified();
    }

    /// An empty folder and an empty log, for the next test.
    void newFolder()
    {
        m_appData = std::make_unique<QTemporaryDir>();
        qputenv("APPDATA", m_appData->path().toUtf8());
        QVERIFY(QDir().mkpath(folder()));
        QCOMPARE(folder(), m_appData->filePath(s("Quendra Client Software/Print Captures")));
        m_log = std::make_unique<TestLog>();
        m_converter = std::make_unique<DateTimeConverter>();
    }
    /// Waits until pending deletions are done.
    void leaveFolder()
    {
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        m_log.reset();
    }

    std::unique_ptr<QTemporaryDir> m_appData;
    std::unique_ptr<TestLog> m_log;
    std::unique_ptr<DateTimeConverter> m_converter;
};

/// Answers the next message box with the mouse, as a user would, and remembers what it said.
class BoxAnswer : public QObject
{
public:
    /// @p button NoButton: the Escape key.
    explicit BoxAnswer(QMessageBox::StandardButton button)
    {
        m_timer.start(1);
        connect(&m_timer, &QTimer::timeout, this, [this, button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible() || !said.isEmpty())
                return;
            const bool asks = box->icon() == QMessageBox::Warning &&
                              box->standardButtons() == (QMessageBox::Yes | QMessageBox::No);
            const bool complains =
                box->icon() == QMessageBox::Critical && box->standardButtons() == QMessageBox::Ok;
            const char* kind = box->textFormat() != Qt::PlainText ? "markup"
                               : asks                             ? "asks"
                               : complains                        ? "complains"
                                                                  : "";
            said = QStringList{s(kind), box->windowTitle(), box->text()}.join(QLatin1Char('|'));
            if (button == QMessageBox::NoButton)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                QTest::mouseClick(box->button(button), Qt::LeftButton);
        });
    }

    QString said; ///< "asks" (Yes or No) or "complains" (Ok), title and text, with bars between.

private:
    QTimer m_timer;
};

inline QTableView* tableOf(const PrintCaptureBase& window)
{
    return window.findChild<QTableView*>(s("tableViewPrintCapture"));
}

inline void clickButton(const PrintCaptureBase& window, const char* name)
{
    QTest::mouseClick(window.findChild<QPushButton*>(s(name)), Qt::LeftButton);
}

/// Returns when everything that the click leads to is done.
inline void clickAction(const PrintCaptureBase& window, int row, int action)
{
    const QTableView* table = tableOf(window);
    const auto* delegate = qobject_cast<ActionBarItemDelegate*>(table->itemDelegate());
    const QPoint button = delegate->actionRect(table->model()->index(row, 3), action).center();
    QTest::mouseMove(table->viewport(), button);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, button);
    QCoreApplication::processEvents(); // clicks are written by the event loop
}

const int manyCaptures = 10000;

/// Fills the folder, with companions.
inline void addManyCaptures()
{
    for (int i = 0; i < manyCaptures; ++i) {
        for (const char* ending : {".pdf", ".TIF"})
            QFile(s("%1/capture %2%3").arg(PrintCaptureModelBase::folder()).arg(i).arg(s(ending)))
                .open(QIODevice::WriteOnly);
    }
}

/// Deletes them as a user does. Meanwhile the window must repaint whenever the event loop is idle, and the
/// folder may be read at most @p mostReads times.
inline void deleteManyCaptures(PrintCaptureBase& window, PrintCaptureModelBase& model, int mostReads)
{
    struct Painted : public QObject
    {
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
        int count{0};
    } painted;
    window.installEventFilter(&painted);
    QTimer idle;
    QObject::connect(&idle, &QTimer::timeout, &window, [&] { window.update(); });

    QCOMPARE(tableOf(window)->model()->rowCount(), manyCaptures);
    QSignalSpy read(&model, &QAbstractItemModel::modelReset);
    QSignalSpy done(&model, &PrintCaptureModelBase::signalDeleteAllComlete);
    const BoxAnswer yes(QMessageBox::Yes);
    clickButton(window, "pushButtonDeleteAll");
    QElapsedTimer clock;
    clock.start();
    idle.start(0);
    QVERIFY(done.wait(60000));
    qInfo("%d documents with companions deleted in %d ms, in which the window was painted %d times",
          manyCaptures, int(clock.elapsed()), painted.count);
    QVERIFY(done.first().first().toBool());
    QVERIFY(painted.count >= 5);
    QVERIFY2(read.count() <= mostReads, QByteArray::number(read.count()));
    QVERIFY(QDir(PrintCaptureModelBase::folder()).isEmpty());
    QCOMPARE(tableOf(window)->model()->rowCount(), 0);
    QVERIFY(tableOf(window)->isEnabled());
    QTRY_VERIFY(!QApplication::overrideCursor());
}
