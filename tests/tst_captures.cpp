#include "actionbarheaderview.h"
#include "actionbaritem.h"
#include "actionbaritemdelegate.h"
#include "cursoroverridehelper.h"
#include "datetimeconverter.h"
#include "filesremoverunnable.h"
#include "printcapturebase.h"
#include "printcapturemodelbase.h"
#include "sortfiltertimeproxymodel.h"
#include "testkit.h"

#include <QAbstractItemModelTester>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <QUrl>

#include <cmath>
#include <memory>
#include <stdexcept>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

/// Access to what subclasses see, and files whose companions cannot be removed.
class Model : public PrintCaptureModelBase
{
public:
    using PrintCaptureModelBase::PrintCaptureModelBase;
    using PrintCaptureModelBase::setPages;

    QStringList badCompanions;
    QString longName; ///< Shown instead of "long.pdf": file systems do not allow such names.
    QStringList asked;

protected:
    bool removeExtraFiles(QFileInfo& file) override
    {
        asked.append(file.fileName());
        return PrintCaptureModelBase::removeExtraFiles(file) && !badCompanions.contains(file.fileName());
    }
    bool addEntry(QFileInfo& file) override
    {
        if (longName.isEmpty() || file.fileName() != QLatin1String("long.pdf"))
            return PrintCaptureModelBase::addEntry(file);
        Entry entry = entryOf(file);
        entry.name = entry.toolTip = longName;
        appendEntry(entry);
        return true;
    }
};

class Window : public PrintCaptureBase
{
public:
    using PrintCaptureBase::hidePagesColumn;
    using PrintCaptureBase::hidePrinterStatus;
    using PrintCaptureBase::PrintCaptureBase;
};

/// Answers the next message box with the mouse, as a user would, and remembers what it said.
class BoxAnswer : public QObject
{
public:
    /// @p button 0: the Escape key.
    explicit BoxAnswer(QMessageBox::StandardButton button)
    {
        m_timer.start(1);
        connect(&m_timer, &QTimer::timeout, this, [this, button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible() || shown)
                return;
            shown = true;
            title = box->windowTitle();
            text = box->text();
            buttons = box->standardButtons();
            icon = box->icon();
            format = box->textFormat();
            if (button == QMessageBox::NoButton)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                QTest::mouseClick(box->button(button), Qt::LeftButton);
        });
    }

    bool shown{false};
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon{QMessageBox::NoIcon};
    Qt::TextFormat format{Qt::RichText};

private:
    QTimer m_timer;
};

/// The desktop's opener of files, in place of programs.
class Opener : public QObject
{
    Q_OBJECT
public:
    Opener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }
};

/// Rights that hold for root too: the process is nobody while this lives.
class OrdinaryUser
{
#ifdef Q_OS_UNIX
public:
    OrdinaryUser()
        : m_wasRoot(geteuid() == 0 && seteuid(65534) == 0)
    {}
    ~OrdinaryUser()
    {
        if (m_wasRoot && seteuid(0) != 0)
            qFatal("root is lost");
    }

private:
    bool m_wasRoot;
#endif
};

const QFile::Permissions readOnly = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadUser | QFile::ExeUser |
                                    QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;

} // namespace

class TestCaptures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void tableOfTheFolder();
    void foldersThatAreNone_data();
    void foldersThatAreNone();
    void actions_data();
    void actions();
    void actionsThatAreNone();
    void clickMayRefresh();
    void removeByRow();
    void removeByFile();
    void removeWhatStays();
    void removeAll_data();
    void removeAll();
    void readOnlyFolder();
    void oddNames();
    void icons_data();
    void icons();

    void form();
    void newestFirst();
    void view();
    void viewWithoutProgram();
    void deleteOne_data();
    void deleteOne();
    void deleteAllAsks();
    void deleteTenThousand();
    void closedWhileDeleting();
    void newFax();
    void missingFiles_data();
    void missingFiles();
    void escapeAndClose();
    void geometry();
    void printerStatus();
    void sortByTitles();
    void forSubclasses();

private:
    QString folder() const
    {
        return m_appData->path() + QStringLiteral("/Quendra Client Software/Print Captures");
    }
    QString path(const QString& name) const { return folder() + QLatin1Char('/') + name; }
    void add(const QString& name, const QByteArray& content = "%PDF-1.4\n");
    void add(const QStringList& names);
    QStringList names() const;

    /// Opens the window over what the folder holds.
    Window* open(bool newFaxAction = true);
    QPoint button(int row, int action) const;
    void click(int row, int action);
    void click(const char* buttonName);
    bool isEnabled(const char* widget) const
    {
        return m_window->findChild<QWidget*>(QLatin1String(widget))->isEnabled();
    }
    QString shownName(int row) const { return m_table->model()->index(row, 0).data().toString(); }

    std::unique_ptr<QTemporaryDir> m_appData;
    std::unique_ptr<TestLog> m_log;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<DateTimeConverter> m_converter;
    std::unique_ptr<Model> m_model;
    QPointer<Window> m_window;
    QTableView* m_table{nullptr};
};

void TestCaptures::initTestCase()
{
    qRegisterMetaType<QFileInfo>("QFileInfo");
}

void TestCaptures::init()
{
    m_appData = std::make_unique<QTemporaryDir>();
    qputenv("APPDATA", m_appData->path().toUtf8());
    QVERIFY(QDir().mkpath(folder()));
    m_log = std::make_unique<TestLog>();
    m_settings =
        std::make_unique<QSettings>(m_appData->filePath(QStringLiteral("window.ini")), QSettings::IniFormat);
    m_converter = std::make_unique<DateTimeConverter>();
    m_model = std::make_unique<Model>(*m_converter, true);
}

void TestCaptures::cleanup()
{
    delete m_window;
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    m_model.reset();
    m_log.reset();
    QVERIFY(!QApplication::overrideCursor());
}

void TestCaptures::add(const QString& name, const QByteArray& content)
{
    QFile file(path(name));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(name));
    file.write(content);
}

void TestCaptures::add(const QStringList& names)
{
    for (const QString& name : names)
        add(name);
}

QStringList TestCaptures::names() const
{
    return QDir(folder()).entryList(QDir::Files, QDir::Name);
}

Window* TestCaptures::open(bool newFaxAction)
{
    if (!newFaxAction)
        m_model = std::make_unique<Model>(*m_converter, false);
    m_model->slotUpdate();
    m_window = new Window(m_model.get(), *m_converter, *m_settings, true);
    m_table = m_window->findChild<QTableView*>(QStringLiteral("tableViewPrintCapture"));
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window))
        qFatal("The window does not appear");
    return m_window;
}

QPoint TestCaptures::button(int row, int action) const
{
    const auto* delegate = qobject_cast<ActionBarItemDelegate*>(m_table->itemDelegate());
    return delegate->actionRect(m_table->model()->index(row, 3), action).center();
}

void TestCaptures::click(int row, int action)
{
    QTest::mouseMove(m_table->viewport(), button(row, action));
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, button(row, action));
}

void TestCaptures::click(const char* buttonName)
{
    QTest::mouseClick(m_window->findChild<QPushButton*>(QLatin1String(buttonName)), Qt::LeftButton);
}

// --- The model
// ----------------------------------------------------------------------------------------------

void TestCaptures::tableOfTheFolder()
{
    add({QStringLiteral("b.pdf"), QStringLiteral("A.PDF"), QStringLiteral("c.TIF"), QStringLiteral("b.TIF"),
         QStringLiteral("notes.txt"), QStringLiteral("a.b.pdf")});
    const QAbstractItemModelTester tester(m_model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(m_model->rowCount(), 0); // nothing before the first refresh
    QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
    const QDateTime before = QDateTime::currentDateTime().addSecs(-60);
    m_model->slotUpdate();
    QCOMPARE(reset.count(), 1);
    QCOMPARE(m_model->rowCount(), 3);
    QCOMPARE(m_model->columnCount(), 4);

    QStringList titles;
    for (int column = 0; column < 4; ++column)
        titles.append(m_model->headerData(column, Qt::Horizontal).toString());
    QCOMPARE(titles, (QStringList{QStringLiteral("Document Name"), QStringLiteral("Pages"),
                                  QStringLiteral("Created At"), QStringLiteral("Actions")}));
    QVERIFY(!m_model->headerData(0, Qt::Vertical).isValid());
    QVERIFY(!m_model->headerData(4, Qt::Horizontal).isValid());

    const QStringList expected{QStringLiteral("a.b.pdf"), QStringLiteral("A.PDF"), QStringLiteral("b.pdf")};
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(m_model->index(row, 0).data().toString(), expected.at(row));
        QCOMPARE(m_model->index(row, 0).data(Qt::ToolTipRole).toString(), expected.at(row));
        QVERIFY(!m_model->index(row, 0).data(Qt::TextAlignmentRole).isValid());
        QCOMPARE(m_model->index(row, 1).data(), QVariant(0));
        QVERIFY(m_model->index(row, 2).data().toDateTime() > before);
        for (int column = 1; column < 4; ++column) {
            QCOMPARE(m_model->index(row, column).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
            QVERIFY(!m_model->index(row, column).data(Qt::ToolTipRole).isValid());
        }
        QVERIFY(!m_model->index(row, 0).data(Qt::EditRole).isValid());
    }
    const auto item = m_model->index(0, 3).data().value<ActionBarItem>();
    QCOMPARE(item.spacing(), 10);
    QCOMPARE(item.margin(), 10);
    QStringList texts;
    for (const auto& action : item.actions())
        texts.append(action.text);
    QCOMPARE(texts,
             (QStringList{QStringLiteral("New Fax"), QStringLiteral("View"), QStringLiteral("Delete")}));
    QVERIFY(!m_model->data(QModelIndex()).isValid());
}

void TestCaptures::foldersThatAreNone_data()
{
    QTest::addColumn<bool>("isFile");
    QTest::newRow("missing") << false;
    QTest::newRow("a file") << true;
}

void TestCaptures::foldersThatAreNone()
{
    QFETCH(bool, isFile);
    add(QStringLiteral("a.pdf"));
    m_model->slotUpdate();
    QCOMPARE(m_model->rowCount(), 1);
    QVERIFY(QDir(folder()).removeRecursively());
    if (isFile) {
        QFile file(folder());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    m_model->slotUpdate();
    QCOMPARE(m_model->rowCount(), 0);
    QCOMPARE(QFileInfo(folder()).isFile(), isFile); // it was not made either
    QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
    m_model->deleteAll();
    QVERIFY(done.wait());
    QCOMPARE(done.first().first().toBool(), true);
}

void TestCaptures::actions_data()
{
    QTest::addColumn<bool>("newFaxAction");
    QTest::addColumn<int>("clicked");
    QTest::addColumn<QString>("signal");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("new fax") << true << 0 << QStringLiteral("new") << true;
    QTest::newRow("view") << true << 1 << QStringLiteral("view") << true;
    QTest::newRow("delete") << true << 2 << QStringLiteral("remove") << false;
    QTest::newRow("none") << true << -1 << QString() << false;
    QTest::newRow("too many") << true << 3 << QString() << false;
    QTest::newRow("first without new fax") << false << 0 << QStringLiteral("view") << true;
    QTest::newRow("second without new fax") << false << 1 << QStringLiteral("remove") << false;
    QTest::newRow("third without new fax") << false << 2 << QString() << false;
    QTest::newRow("none, which is the first") << false << -1 << QStringLiteral("new") << true;
}

void TestCaptures::actions()
{
    QFETCH(bool, newFaxAction);
    QFETCH(int, clicked);
    QFETCH(QString, signal);
    QFETCH(bool, accepted);
    add(QStringLiteral("a.pdf"));
    Model model(*m_converter, newFaxAction);
    model.slotUpdate();
    const auto shown = model.index(0, 3).data().value<ActionBarItem>();
    QCOMPARE(shown.actions().size(), newFaxAction ? 3 : 2);

    QStringList heard;
    connect(&model, &PrintCaptureModelBase::signalNewFax, this,
            [&](const QString& file, const QString& name) {
                heard.append(QStringLiteral("new"));
                QCOMPARE(file, path(QStringLiteral("a.pdf")));
                QCOMPARE(name, QStringLiteral("a.pdf"));
            });
    connect(&model, &PrintCaptureModelBase::signalView, this, [&](const QFileInfo& file) {
        heard.append(QStringLiteral("view"));
        QCOMPARE(file.filePath(), path(QStringLiteral("a.pdf")));
    });
    connect(&model, &PrintCaptureModelBase::removeEntry, this, [&](const QFileInfo& file) {
        heard.append(QStringLiteral("remove"));
        QCOMPARE(file.filePath(), path(QStringLiteral("a.pdf")));
    });
    ActionBarItem item = shown;
    item.setClickedAction(clicked);
    QCOMPARE(model.setData(model.index(0, 3), QVariant::fromValue(item)), accepted);
    QCOMPARE(heard.join(QLatin1Char(' ')), signal);
    QCOMPARE(names(), QStringList{QStringLiteral("a.pdf")}); // the model asks, and deletes nothing
}

void TestCaptures::actionsThatAreNone()
{
    add(QStringLiteral("a.pdf"));
    m_model->slotUpdate();
    QSignalSpy heard(m_model.get(), &PrintCaptureModelBase::signalNewFax);
    ActionBarItem item;
    item.setClickedAction(0);
    const QVariant value = QVariant::fromValue(item);
    QVERIFY(!m_model->setData(QModelIndex(), value));
    QVERIFY(!m_model->setData(m_model->index(0, 3), value, Qt::DisplayRole));
    QVERIFY(!m_model->setData(m_model->index(0, 3), QStringLiteral("0")));
    QCOMPARE(heard.count(), 0);
}

void TestCaptures::clickMayRefresh()
{
    add(QStringLiteral("a.pdf"));
    m_model->slotUpdate();
    QString name;
    connect(m_model.get(), &PrintCaptureModelBase::signalNewFax, this, [&] {
        QFile::remove(path(QStringLiteral("a.pdf")));
        m_model->slotUpdate();
    });
    connect(m_model.get(), &PrintCaptureModelBase::signalNewFax, this,
            [&](const QString&, const QString& document) { name = document; });
    ActionBarItem item;
    item.setClickedAction(0);
    QVERIFY(m_model->setData(m_model->index(0, 3), QVariant::fromValue(item)));
    QCOMPARE(name, QStringLiteral("a.pdf"));
    QCOMPARE(m_model->rowCount(), 0);
}

void TestCaptures::removeByRow()
{
    add({QStringLiteral("a.pdf"), QStringLiteral("b.pdf"), QStringLiteral("c.pdf"), QStringLiteral("d.pdf")});
    m_model->slotUpdate();
    m_model->badCompanions = QStringList{QStringLiteral("b.pdf")};
    QCOMPARE(m_model->removePrintCapture(0), true);
    QCOMPARE(m_model->removeRows(1, 2), false);
    QCOMPARE(m_model->asked,
             (QStringList{QStringLiteral("a.pdf"), QStringLiteral("b.pdf"), QStringLiteral("c.pdf")}));
    QCOMPARE(m_model->removeRows(3, 0), true);
    QCOMPARE(names(), QStringList{QStringLiteral("d.pdf")});
    QCOMPARE(m_model->rowCount(), 4); // the caller refreshes
    QVERIFY(m_log->messages(QStringLiteral("WARNING")).isEmpty());

    // already gone: logged, and true all the same
    QCOMPARE(m_model->removePrintCapture(2), true);
    QCOMPARE(m_log->messages(QStringLiteral("WARNING")),
             QStringList{QStringLiteral("printcapturemodelbase.cpp Can't delete file ") +
                         path(QStringLiteral("c.pdf"))});

    for (int row : {-1, 4}) {
        try {
            m_model->removePrintCapture(row);
            QFAIL("no error");
        } catch (const std::out_of_range& error) {
            QCOMPARE(error.what(), "invalid vector<T> subscript");
        }
    }
    QVERIFY_EXCEPTION_THROWN(m_model->removeRows(3, 2), std::out_of_range);
}

void TestCaptures::removeByFile()
{
    add({QStringLiteral("a.pdf"), QStringLiteral("b.pdf")});
    m_model->slotUpdate();
    const QAbstractItemModelTester tester(m_model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(!m_model->removePrintCapture(QFileInfo(QStringLiteral("a.pdf")))); // another path
    QVERIFY(!m_model->removePrintCapture(QFileInfo(path(QStringLiteral("A.pdf")))));
    QSignalSpy removed(m_model.get(), &QAbstractItemModel::rowsRemoved);
    QVERIFY(m_model->removePrintCapture(QFileInfo(path(QStringLiteral("b.pdf")))));
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().at(1).toInt(), 1);
    QCOMPARE(m_model->rowCount(), 1);
    QCOMPARE(names(), QStringList{QStringLiteral("a.pdf")});
    m_model->badCompanions = QStringList{QStringLiteral("a.pdf")};
    QVERIFY(!m_model->removePrintCapture(QFileInfo(path(QStringLiteral("a.pdf")))));
    QCOMPARE(m_model->rowCount(), 0);
}

void TestCaptures::removeWhatStays()
{
    // A folder cannot be deleted as a file. The removal is announced and the refresh inside finds the
    // document again: to the tester's eyes, which count rows, that is wrong. Views see the truth, by the
    // reset.
    QVERIFY(QDir().mkpath(path(QStringLiteral("a.pdf"))));
    add(QStringLiteral("b.pdf"));
    m_model->slotUpdate();
    SortFilterTimeProxyModel proxy(*m_converter, 2);
    proxy.setSourceModel(m_model.get());
    QTableView view;
    view.setModel(&proxy);
    const QAbstractItemModelTester tester(m_model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::Warning);
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("FAIL! Compared values are not the same")));
    QVERIFY(m_model->removePrintCapture(QFileInfo(path(QStringLiteral("a.pdf")))));
    QCOMPARE(m_model->rowCount(), 2);
    QCOMPARE(view.verticalHeader()->count(), 2);
    QCOMPARE(m_log->messages(QStringLiteral("WARNING")).size(), 1);
}

void TestCaptures::removeAll_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QStringList>("left");
    const auto list = [](const char* names) {
        return QString::fromLatin1(names).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    QTest::newRow("nothing") << list("") << true << list("");
    QTest::newRow("with companions") << list("a.pdf a.TIF b.c.pdf b.c.TIF") << true << list("");
    QTest::newRow("one without") << list("a.pdf b.pdf b.TIF") << false << list("");
    QTest::newRow("what is no document") << list("a.pdf a.TIF x.TIF y.txt") << true << list("x.TIF y.txt");
#ifdef Q_OS_LINUX
    QTest::newRow("companion in lower case") << list("a.pdf a.tif") << false << list("a.tif");
#endif
}

void TestCaptures::removeAll()
{
    QFETCH(QStringList, files);
    QFETCH(bool, result);
    QFETCH(QStringList, left);
    add(files);
    m_model->slotUpdate();
    QThread* thread = nullptr;
    int rowsThen = -1;
    QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
    connect(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete, this, [&] {
        thread = QThread::currentThread();
        rowsThen = m_model->rowCount();
    });
    m_model->deleteAll();
    QVERIFY(done.wait());
    QCOMPARE(done.count(), 1);
    QCOMPARE(done.first().first().toBool(), result);
    QCOMPARE(thread, QThread::currentThread());
    QCOMPARE(rowsThen, 0);
    QCOMPARE(names(), left);
}

void TestCaptures::readOnlyFolder()
{
#ifndef Q_OS_UNIX
    QSKIP("Read-only folders keep nobody from deleting files here");
#else
    add({QStringLiteral("a.pdf"), QStringLiteral("a.TIF")});
    const QStringList folders{m_appData->path(), QFileInfo(folder()).path(), folder()};
    for (const QString& each : folders)
        QVERIFY(QFile::setPermissions(each, readOnly));
    QVERIFY(QFile::setPermissions(path(QStringLiteral("a.pdf")), QFile::Permissions())); // nor may it be read
    {
        const OrdinaryUser user;
        m_model->slotUpdate();
        QCOMPARE(m_model->index(0, 0).data().toString(), QStringLiteral("a.pdf"));
        QVERIFY(m_model->removePrintCapture(0)); // logged only
        QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
        m_model->deleteAll();
        QVERIFY(done.wait());
        QCOMPARE(done.first().first().toBool(), false);
        QCOMPARE(m_model->rowCount(), 1);
    }
    QCOMPARE(m_log->messages(QStringLiteral("WARNING")).size(), 1);
    for (const QString& each : folders)
        QFile::setPermissions(each, readOnly | QFile::WriteOwner | QFile::WriteUser);
#endif
}

void TestCaptures::oddNames()
{
    const QStringList odd{
        QStringLiteral("<b>bold.pdf"),        QStringLiteral("two\nlines.pdf"),
        QStringLiteral("\u202Efdp.evil.pdf"), QString(240, QLatin1Char('n')) + QStringLiteral(".pdf"),
        QStringLiteral("%1 & %2.pdf"),        QStringLiteral("long.pdf")};
    add(odd);
    m_model->longName = QStringLiteral("<i>") + QString(500, QLatin1Char('m'));
    open();
    QStringList shown;
    for (int row = 0; row < odd.size(); ++row) {
        shown.append(shownName(row));
        QCOMPARE(m_table->model()->index(row, 0).data(Qt::ToolTipRole).toString(), shownName(row));
    }
    for (const QString& name : odd)
        QVERIFY(shown.contains(name == QLatin1String("long.pdf") ? m_model->longName : name));
    m_window->grab(); // paints them all

    Opener opener;
    for (int row = 0; row < odd.size(); ++row)
        click(row, 1);
    QCOMPARE(opener.opened.size(), odd.size());
    for (const QString& name : odd)
        QVERIFY(opener.opened.contains(QUrl::fromLocalFile(path(name))));
    while (m_table->model()->rowCount() > 0) {
        BoxAnswer yes(QMessageBox::Yes);
        click(0, 2);
        QVERIFY(yes.shown);
    }
    QVERIFY(names().isEmpty());
}

void TestCaptures::icons_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {":/icons/new-fax-action-icon", ":/icons/view-icon", ":/icons/abort", ":/icons/folder"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestCaptures::icons()
{
    QFETCH(QString, name);
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto contrast = [](double a, double b) {
        return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
    };
    const QIcon icon(name);
    for (int size : {16, 24, 32, 64}) {
        const QImage image = icon.pixmap(size, size).toImage();
        QCOMPARE(image.size(), QSize(size, size)); // drawn for the size, not scaled up
        int inked = 0;
        int solid = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const QColor color = image.pixelColor(x, y);
                inked += color.alpha() > 0;
                if (color.alpha() < 255)
                    continue;
                ++solid;
                QVERIFY(contrast(luminance(color), luminance(Qt::white)) >= 3);
                QVERIFY(contrast(luminance(color), luminance(QColor(0x2a, 0x2a, 0x2a))) >= 3);
            }
        }
        QVERIFY(inked > size * size / 8);
        QVERIFY2(solid * 3 >= inked,
                 qPrintable(QStringLiteral("%1 of %2").arg(solid).arg(inked))); // lines on the grid of pixels
    }
}

// --- The window
// ---------------------------------------------------------------------------------------------

void TestCaptures::form()
{
    open();
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Print Captures"));
    QVERIFY(m_window->isModal());
    QCOMPARE(m_window->minimumSize(), QSize(650, 195));
    QVERIFY(!(m_window->windowFlags() & Qt::WindowContextHelpButtonHint));
    for (const char* layout : {"verticalLayout", "horizontalLayout_2", "horizontalLayout"})
        QVERIFY2(m_window->findChild<QLayout*>(QLatin1String(layout)), layout);
    QCOMPARE(m_window->layout()->objectName(), QStringLiteral("verticalLayout"));
    QCOMPARE(m_window->findChild<QLabel*>(QStringLiteral("label"))->text(), QStringLiteral("Status:"));
    QCOMPARE(m_window->findChild<QLabel*>(QStringLiteral("status"))->text(), QStringLiteral("Idle"));
    QCOMPARE(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonDeleteAll"))->text(),
             QStringLiteral("Delete All"));
    QCOMPARE(m_window->findChild<QPushButton*>(QStringLiteral("pushButtonClose"))->text(),
             QStringLiteral("Close"));

    QCOMPARE(m_table->lineWidth(), 1);
    QVERIFY(m_table->alternatingRowColors() && m_table->wordWrap() && m_table->isSortingEnabled());
    QCOMPARE(m_table->selectionMode(), QAbstractItemView::SingleSelection);
    QCOMPARE(m_table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(m_table->focusPolicy(), Qt::NoFocus);
    QCOMPARE(m_table->verticalHeader()->defaultSectionSize(), 20);
    QCOMPARE(m_table->verticalHeader()->minimumSectionSize(), 20);
    QVERIFY(!m_table->verticalHeader()->highlightSections() &&
            !m_table->verticalHeader()->stretchLastSection());

    const auto* header = qobject_cast<ActionBarHeaderView*>(m_table->horizontalHeader());
    QVERIFY(header); // the library's class, by a cast in another module
    QCOMPARE(header->actionColumn(), 3);
    QVERIFY(header->sectionsClickable() && header->isSortIndicatorShown() && header->stretchLastSection());
    QVERIFY(!header->highlightSections());
    QVERIFY(header->property("showSortIndicator").toBool());
    QCOMPARE(header->sectionSize(1), 50);
    QCOMPARE(header->sectionSize(2), 150);
    QCOMPARE(header->sectionResizeMode(0), QHeaderView::Stretch);
    for (int column = 1; column < 4; ++column)
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Fixed);
    QVERIFY(!isEnabled("pushButtonDeleteAll")); // nothing there
}

void TestCaptures::newestFirst()
{
    // time stamps of files are coarse: go on until the times differ
    add(QStringLiteral("b-oldest.pdf"));
    const auto created = [this](const char* name) {
        const QFileInfo info(path(QLatin1String(name)));
        return info.birthTime().isValid() ? info.birthTime() : info.lastModified();
    };
    const QVector<QPair<const char*, const char*>> younger{{"c-middle.pdf", "b-oldest.pdf"},
                                                           {"a-newest.pdf", "c-middle.pdf"}};
    for (const auto& pair : younger) {
        QTRY_VERIFY((QFile::remove(path(QLatin1String(pair.first))), add(QLatin1String(pair.first)),
                     created(pair.first) > created(pair.second)));
    }
    m_converter->setFormat(QStringLiteral("ss.zzz"));
    open();
    QCOMPARE(shownName(0), QStringLiteral("a-newest.pdf"));
    QCOMPARE(shownName(2), QStringLiteral("b-oldest.pdf"));
    QCOMPARE(m_table->model()->index(0, 2).data().toString(), m_converter->toText(created("a-newest.pdf")));
    QCOMPARE(m_table->horizontalHeader()->sortIndicatorSection(), 2);
    QCOMPARE(m_table->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestCaptures::view()
{
    add(QStringLiteral("a b.pdf"));
    open();
    Opener opener;
    click(0, 1);
    QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(path(QStringLiteral("a b.pdf")))});
    delete m_window;
    open(false); // without "New Fax", "View" is the first
    click(0, 0);
    QCOMPARE(opener.opened.size(), 2);
}

void TestCaptures::viewWithoutProgram()
{
    add(QStringLiteral("a.pdf"));
    open(); // this platform opens no files
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("does not support")));
    BoxAnswer answer(QMessageBox::Ok);
    click(0, 1);
    QVERIFY(answer.shown);
    QCOMPARE(answer.title, QStringLiteral("Quendra Client"));
    QCOMPARE(
        answer.text,
        QStringLiteral("This file does not have a program associated with it and cannot be opened. Install a "
                       "program to open TIFF files, or create a file association for TIFF files."));
    QCOMPARE(answer.icon, QMessageBox::Critical);
    QCOMPARE(m_log->messages(QStringLiteral("ERROR")),
             QStringList{QStringLiteral("printcapturebase.cpp Failed to open file: ") +
                         path(QStringLiteral("a.pdf"))});
}

void TestCaptures::deleteOne_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("deleted");
    QTest::newRow("Yes") << int(QMessageBox::Yes) << true;
    QTest::newRow("No") << int(QMessageBox::No) << false;
    QTest::newRow("Escape") << int(QMessageBox::NoButton) << false;
}

void TestCaptures::deleteOne()
{
    QFETCH(int, answer);
    QFETCH(bool, deleted);
    add({QStringLiteral("a.pdf"), QStringLiteral("b.pdf"), QStringLiteral("c.pdf")});
    open();
    m_table->sortByColumn(0, Qt::AscendingOrder);
    BoxAnswer box{QMessageBox::StandardButton(answer)};
    // Qt's proxy notices that the model was reset inside
    const char* warning = "QSortFilterProxyModel: inconsistent changes reported by source model";
    if (deleted)
        QTest::ignoreMessage(QtWarningMsg, warning);
    click(1, 2);
    QVERIFY(box.shown);
    QCOMPARE(box.title, QStringLiteral("Quindra Client"));
    QCOMPARE(box.text, QStringLiteral("Are you sure you want to delete the document?"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(names().contains(QStringLiteral("b.pdf")), !deleted);
    QCOMPARE(m_table->model()->rowCount(), deleted ? 2 : 3);
    QCOMPARE(shownName(0), QStringLiteral("a.pdf"));
    QVERIFY(isEnabled("pushButtonDeleteAll"));
    if (deleted) {
        QTest::ignoreMessage(QtWarningMsg, warning);
        BoxAnswer again(QMessageBox::Yes);
        click(0, 2);
        QCOMPARE(names(), QStringList{QStringLiteral("c.pdf")});
        BoxAnswer last(QMessageBox::Yes);
        click(0, 2);
        QVERIFY(names().isEmpty());
        QVERIFY(!isEnabled("pushButtonDeleteAll"));
    }
}

void TestCaptures::deleteAllAsks()
{
    add({QStringLiteral("a.pdf"), QStringLiteral("b.pdf")});
    open();
    {
        BoxAnswer no(QMessageBox::No);
        click("pushButtonDeleteAll");
        QVERIFY(no.shown);
        QCOMPARE(no.title, QStringLiteral("Quendra Client"));
        QCOMPARE(no.text, QStringLiteral("Are you sure you want to delete all the print captures?"));
        QCOMPARE(no.buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(no.icon, QMessageBox::Warning);
    }
    QCOMPARE(names().size(), 2);
    QVERIFY(m_table->isEnabled() && !QApplication::overrideCursor());

    BoxAnswer yes(QMessageBox::Yes);
    click("pushButtonDeleteAll");
    // the answer has come, the pool's has not: it needs the event loop
    QVERIFY(!m_table->isEnabled() && !isEnabled("pushButtonDeleteAll"));
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterIdle);
    QVERIFY(!isEnabled("pushButtonDeleteAll"));
    QTRY_VERIFY(m_table->isEnabled());
    QVERIFY(names().isEmpty());
    QVERIFY(!isEnabled("pushButtonDeleteAll"));
    QTRY_VERIFY(!QApplication::overrideCursor());
    add(QStringLiteral("c.pdf"));
    m_window->slotUpdate();
    QVERIFY(isEnabled("pushButtonDeleteAll"));
}

void TestCaptures::deleteTenThousand()
{
    const int count = 10000;
    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("capture %1").arg(i, 5, 10, QLatin1Char('0'));
        QFile(path(name + QStringLiteral(".pdf"))).open(QIODevice::WriteOnly);
        QFile(path(name + QStringLiteral(".TIF"))).open(QIODevice::WriteOnly);
    }
    open();
    QCOMPARE(m_table->model()->rowCount(), count);

    // The window is asked to paint whenever the loop is idle; each painting counts.
    struct Painted : public QObject
    {
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
        int count{0};
    } painted;
    m_window->findChild<QLabel*>(QStringLiteral("status"))->installEventFilter(&painted);
    QTimer idle;
    connect(&idle, &QTimer::timeout, m_window, [this] { m_window->update(); });

    QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
    BoxAnswer yes(QMessageBox::Yes);
    QElapsedTimer clock;
    click("pushButtonDeleteAll");
    clock.start();
    idle.start(0);
    QVERIFY(done.wait(60000));
    qInfo("%d documents with companions deleted in %d ms, in which the window was painted %d times", count,
          int(clock.elapsed()), painted.count);
    QCOMPARE(done.first().first().toBool(), true);
    QVERIFY(painted.count >= 5);
    QVERIFY(names().isEmpty());
    QCOMPARE(m_table->model()->rowCount(), 0);
    QVERIFY(m_table->isEnabled());
    QTRY_VERIFY(!QApplication::overrideCursor());
}

void TestCaptures::closedWhileDeleting()
{
    add(QStringLiteral("a.pdf"));
    open();
    QSignalSpy done(m_model.get(), &PrintCaptureModelBase::signalDeleteAllComlete);
    BoxAnswer yes(QMessageBox::Yes);
    click("pushButtonDeleteAll");
    QVERIFY(QApplication::overrideCursor());
    m_window->close();
    QTRY_VERIFY(!m_window);
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(done.count() > 0 || done.wait());

    add(QStringLiteral("b.pdf"));
    m_model->deleteAll();
    m_model.reset(); // and without its model the pool goes on
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(names().isEmpty());
}

void TestCaptures::newFax()
{
    add(QStringLiteral("a.pdf"));
    open();
    QSignalSpy wanted(m_window, &PrintCaptureBase::signalSendNewFax);
    click(0, 0);
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(wanted.first(), (QVariantList{path(QStringLiteral("a.pdf")), QStringLiteral("a.pdf")}));
    QVERIFY(!m_window->isVisible());
    QTRY_VERIFY(!m_window);

    open();
    connect(m_window, &PrintCaptureBase::signalSendNewFax, this, [this] { delete m_window; });
    m_window->slotNewFax(path(QStringLiteral("a.pdf")), QStringLiteral("a.pdf"));
    QVERIFY(!m_window);
}

void TestCaptures::missingFiles_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<QString>("text");
    QTest::newRow("new fax") << 0
                             << QStringLiteral("Failed to create new fax.\r\nThe file %1 cannot be found.");
    QTest::newRow("view") << 1 << QStringLiteral("Failed to open file.\r\nThe file %1 cannot be found.");
}

void TestCaptures::missingFiles()
{
    QFETCH(int, action);
    QFETCH(QString, text);
    const QString name = QStringLiteral("<b>%1.pdf");
    add(name);
    open();
    QVERIFY(QFile::remove(path(name)));
    QSignalSpy wanted(m_window, &PrintCaptureBase::signalSendNewFax);
    BoxAnswer ok(QMessageBox::Ok);
    click(0, action);
    QVERIFY(ok.shown);
    QCOMPARE(ok.title, QStringLiteral("Quendra Client"));
    QCOMPARE(ok.text, text.arg(path(name)));
    QCOMPARE(ok.icon, QMessageBox::Critical);
    QCOMPARE(ok.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(ok.format, Qt::PlainText);
    QCOMPARE(wanted.count(), 0);
    QVERIFY(m_window && m_window->isVisible());

    // deleting what is gone: logged, and the table is true again
    BoxAnswer yes(QMessageBox::Yes);
    click(0, 2);
    QCOMPARE(m_log->messages(QStringLiteral("WARNING")),
             QStringList{QStringLiteral("printcapturemodelbase.cpp Can't delete file ") + path(name)});
    QCOMPARE(m_table->model()->rowCount(), 0);
}

void TestCaptures::escapeAndClose()
{
    open();
    QTest::keyClick(m_window, Qt::Key_Escape);
    QVERIFY(m_window->isVisible());
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(m_window, &escape);
    QVERIFY(!escape.isAccepted());
    click("pushButtonClose");
    QVERIFY(!m_window->isVisible());
    QTRY_VERIFY(!m_window);
    QVERIFY(!QApplication::overrideCursor());

    open();
    QTimer::singleShot(0, m_window, &QWidget::close); // by the window's frame
    QCOMPARE(m_window->exec(), int(QDialog::Rejected));
    QTRY_VERIFY(!m_window);
}

void TestCaptures::geometry()
{
    open();
    m_window->setGeometry(40, 60, 700, 333);
    QCoreApplication::processEvents();
    const QRect wanted = m_window->geometry();
    click("pushButtonClose");
    QTRY_VERIFY(!m_window);
    m_settings->sync();
    QSettings file(m_settings->fileName(), QSettings::IniFormat); // a later run of the program
    QCOMPARE(file.allKeys(), QStringList{QStringLiteral("Settings/PrintCapturesWindow/geometry")});
    file.setValue(QStringLiteral("other"), 1);
    file.sync();
    m_settings = std::make_unique<QSettings>(m_settings->fileName(), QSettings::IniFormat);
    open();
    QCOMPARE(m_window->geometry(), wanted);
    QCOMPARE(m_settings->group(), QString()); // the groups were left
    delete m_window;
    m_settings->setValue(QStringLiteral("Settings/PrintCapturesWindow/geometry"), QByteArray("nonsense"));
    open();
    QVERIFY(m_window->width() >= 650);
}

void TestCaptures::printerStatus()
{
    open();
    m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus(2));
    QVERIFY(!isEnabled("pushButtonDeleteAll")); // there is nothing
    add(QStringLiteral("a.pdf"));
    m_window->slotUpdate();
    QVERIFY(isEnabled("pushButtonDeleteAll"));
    for (int idle : {2, 5, 6}) {
        for (int status : {0, 3, 4, 7, -1, idle}) { // none of the others changes anything
            m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus(status));
            QVERIFY(isEnabled("pushButtonDeleteAll"));
        }
        for (int status : {1, 3, 4, 0, 7}) {
            m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus(status));
            QVERIFY(!isEnabled("pushButtonDeleteAll"));
        }
        m_model->slotUpdate();
        QVERIFY(!isEnabled("pushButtonDeleteAll"));
        m_window->slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus(idle));
        QVERIFY(isEnabled("pushButtonDeleteAll"));
    }
}

void TestCaptures::sortByTitles()
{
    add({QStringLiteral("b.pdf"), QStringLiteral("C.pdf"), QStringLiteral("a.pdf")});
    open();
    const auto clickTitle = [this](int column) {
        QHeaderView* header = m_table->horizontalHeader();
        const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, 5);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
    };
    const auto shown = [this] { return QStringList{shownName(0), shownName(1), shownName(2)}; };
    const QStringList ascending{QStringLiteral("a.pdf"), QStringLiteral("b.pdf"), QStringLiteral("C.pdf")};
    clickTitle(0);
    QCOMPARE(shown(), ascending);
    clickTitle(3);
    QCOMPARE(shown(), ascending);
    clickTitle(0);
    QCOMPARE(shown(), QStringList(ascending.crbegin(), ascending.crend()));
    m_model->setPages(2, 7); // C.pdf
    m_model->setPages(0, 9); // a.pdf
    clickTitle(1);
    QCOMPARE(shown(),
             (QStringList{QStringLiteral("b.pdf"), QStringLiteral("C.pdf"), QStringLiteral("a.pdf")}));
}

void TestCaptures::forSubclasses()
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

QTEST_MAIN(TestCaptures)
#include "tst_captures.moc"
