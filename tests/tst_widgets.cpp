#include "actionbarheaderview.h"
#include "actionbaritem.h"
#include "actionbaritemdelegate.h"
#include "datetimeconverter.h"
#include "sortfiltertimeproxymodel.h"

#include <QHelpEvent>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyleFactory>
#include <QTableView>
#include <QTest>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <algorithm>

namespace {

enum Column { Name, Time, Actions };
const int rows = 3;

QIcon plainIcon(const QColor& color)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(color);
    return QIcon(pixmap);
}

ActionBarItem threeActions()
{
    ActionBarItem item;
    item.setSpacing(10);
    item.setMargin(10);
    item.addAction(plainIcon(Qt::red), QStringLiteral("First"));
    item.addAction(plainIcon(Qt::green), QStringLiteral("Second"));
    item.addAction(plainIcon(Qt::blue), QStringLiteral("<b>Third</b>"));
    return item;
}

QDateTime moment(int month, int day)
{
    return QDateTime(QDate(2024, month, day), QTime(12, 30), Qt::UTC);
}

/// A table of a name, a time and actions, with everything of this library on it.
class Table : public QTableView
{
public:
    Table()
        : model(rows, 3)
        , delegate(this)
        , header(new ActionBarHeaderView(Qt::Horizontal, this))
    {
        model.setHorizontalHeaderLabels(
            {QStringLiteral("Name"), QStringLiteral("Time"), QStringLiteral("Actions")});
        for (int row = 0; row < rows; ++row) {
            model.setData(model.index(row, Name), QStringLiteral("row %1").arg(row));
            model.setData(model.index(row, Time), moment(1, row + 1));
            model.setData(model.index(row, Actions), QVariant::fromValue(threeActions()));
            model.setData(model.index(row, Actions), int(Qt::AlignCenter), Qt::TextAlignmentRole);
        }
        header->setSectionsClickable(true);
        header->setActionColumn(Actions);
        setHorizontalHeader(header);
        setItemDelegate(&delegate);
        setModel(&model);
        setSortingEnabled(true);
        setSelectionBehavior(SelectRows);
        sortByColumn(Name, Qt::AscendingOrder);
        setColumnWidth(Actions, 200);
        resize(500, 200);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("The window does not appear");
    }

    using QTableView::sizeHintForColumn;

    QPoint button(int row, int action) const
    {
        return delegate.actionRect(model.index(row, Actions), action).center();
    }
    int clicked(int row) const
    {
        return model.index(row, Actions).data().value<ActionBarItem>().clickedAction();
    }
    QImage picture() { return viewport()->grab().toImage(); }

    QStandardItemModel model;
    ActionBarItemDelegate delegate;
    ActionBarHeaderView* header;
};

QString toolTipAt(Table& table, const QPoint& position)
{
    QHelpEvent event(QEvent::ToolTip, position, table.viewport()->mapToGlobal(position));
    QApplication::sendEvent(table.viewport(), &event);
    return QToolTip::text();
}

/// A source that resets between announcing a removal and completing it.
class ResettingModel : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : names.size();
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return role == Qt::DisplayRole ? names.value(index.row()) : QVariant();
    }
    void remove(int row)
    {
        beginRemoveRows(QModelIndex(), row, row);
        beginResetModel();
        names.removeAt(row);
        endResetModel();
        endRemoveRows();
    }
    QStringList names;
};

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clicks_data();
    void clicks();
    void clicksThatAreNone();
    void hover();
    void painting_data();
    void painting();
    void toolTips();
    void actionColumnIsNotSorted();
    void actionColumnIsNotNarrow();
    void stretchedActionColumn_data();
    void stretchedActionColumn();
    void timesAreSortedAsTimes();
    void filterMatchesWhatIsShown();
    void converter();
    void sourceThatResetsInARemoval();
};

void TestWidgets::clicks_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<Qt::LayoutDirection>("direction");
    for (const QString& style : QStyleFactory::keys()) {
        QTest::addRow("%s", qPrintable(style)) << style << Qt::LeftToRight;
        QTest::addRow("%s, right to left", qPrintable(style)) << style << Qt::RightToLeft;
    }
}

void TestWidgets::clicks()
{
    QFETCH(QString, style);
    QFETCH(Qt::LayoutDirection, direction);
    const std::unique_ptr<QStyle> owned(QStyleFactory::create(style));
    Table table;
    table.setStyle(owned.get());
    table.setLayoutDirection(direction);
    for (int action = 0; action < 3; ++action) {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.button(1, action));
        QCOMPARE(table.clicked(1), action);
        QCOMPARE(table.currentIndex().row(), 1);
    }
    QCOMPARE(table.clicked(0), -1);
    const bool isMirrored = direction == Qt::RightToLeft;
    QCOMPARE(table.button(1, 2).x() < table.button(1, 0).x(), isMirrored);
    const QRect first = table.delegate.actionRect(table.model.index(1, Actions), 0);
    const QRect second = table.delegate.actionRect(table.model.index(1, Actions), 1);
    QCOMPARE(qAbs(second.center().x() - first.center().x()), first.width() + 10);
    // centred in the cell
    QVERIFY(qAbs(second.center().x() - table.visualRect(table.model.index(1, Actions)).center().x()) <= 1);
}

void TestWidgets::clicksThatAreNone()
{
    Table table;
    QWidget* area = table.viewport();
    QTest::mousePress(area, Qt::LeftButton, {}, table.button(0, 0));
    QTest::mouseMove(area, table.button(0, 1));
    QTest::mouseRelease(area, Qt::LeftButton, {}, table.button(0, 1));
    QCOMPARE(table.clicked(0), -1);
    QTest::mousePress(area, Qt::LeftButton, {}, table.button(0, 0));
    QTest::mouseRelease(area, Qt::LeftButton, {}, table.button(1, 0));
    QTest::mouseRelease(area, Qt::LeftButton, {}, table.button(0, 0)); // of a press that is over
    QCOMPARE(table.clicked(0), -1);
    QTest::mouseClick(area, Qt::RightButton, {}, table.button(0, 0));
    QCOMPARE(table.clicked(0), -1);
    QTest::mouseClick(area, Qt::LeftButton, {}, (table.button(0, 0) + table.button(0, 1)) / 2); // between two
    QCOMPARE(table.clicked(0), -1);

    QSignalSpy written(&table.model, &QAbstractItemModel::dataChanged);
    QTest::mouseClick(area, Qt::LeftButton, {}, table.button(0, 0));
    QTest::mouseDClick(area, Qt::LeftButton, {}, table.button(0, 0));
    QTest::mouseRelease(area, Qt::LeftButton, {}, table.button(0, 0));
    QCOMPARE(table.clicked(0), 0);
    QCOMPARE(written.count(), 1); // a double click is one click

    table.model.item(1, Actions)->setEnabled(false);
    QTest::mouseClick(area, Qt::LeftButton, {}, table.button(1, 0));
    QCOMPARE(table.clicked(1), -1);
    table.setEnabled(false);
    QTest::mouseClick(area, Qt::LeftButton, {}, table.button(2, 0));
    QCOMPARE(table.clicked(2), -1);
}

void TestWidgets::hover()
{
    Table table;
    QWidget* area = table.viewport();
    const QPoint name = table.visualRect(table.model.index(0, Name)).center();
    const QPoint button = table.button(0, 1);
    const QRect rect = table.delegate.actionRect(table.model.index(0, Actions), 1);
    QTest::mouseMove(area, name);
    const QImage still = table.picture();

    QTest::mouseMove(area, button);
    QCOMPARE(area->cursor().shape(), Qt::PointingHandCursor);
    const QImage hovered = table.picture();
    QVERIFY(hovered != still);
    QTest::mousePress(area, Qt::LeftButton, {}, button);
    QVERIFY(table.picture().copy(rect) != hovered.copy(rect));
    QTest::mouseRelease(area, Qt::LeftButton, {}, button);

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(area, &leave);
    QVERIFY(area->cursor().shape() != Qt::PointingHandCursor);
    table.clearSelection();
    table.setCurrentIndex(QModelIndex());
    QCOMPARE(table.picture().copy(rect), still.copy(rect));
    QTest::mouseMove(area, button);
    QTest::mouseMove(area, QPoint(button.x(), area->height() - 2)); // below the last row
    QVERIFY(area->cursor().shape() != Qt::PointingHandCursor);
}

void TestWidgets::painting_data()
{
    QTest::addColumn<qreal>("ratio");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("plain") << qreal(1) << true;
    QTest::newRow("twice the density") << qreal(2) << true;
    QTest::newRow("disabled") << qreal(1) << false;
}

void TestWidgets::painting()
{
    QFETCH(qreal, ratio);
    QFETCH(bool, enabled);
    Table table;
    table.selectRow(1);
    table.setEnabled(enabled);
    const QSize size = table.viewport()->size();
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    table.viewport()->render(&image);
    const auto colorAt = [&](const QPoint& point) { return image.pixelColor(point * ratio); };
    for (int row = 0; row < 2; ++row) { // row 1 is selected
        const QColor shown = colorAt(table.button(row, 0));
        if (enabled)
            QCOMPARE(shown, QColor(Qt::red));
        else
            QVERIFY(shown.saturation() < 100);
        // the whole image is there, and not more
        const QRect rect = table.delegate.actionRect(table.model.index(row, Actions), 1);
        const QRect icon = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(16, 16), rect);
        if (enabled) {
            QCOMPARE(colorAt(icon.topLeft()), QColor(Qt::green));
            QCOMPARE(colorAt(icon.bottomRight()), QColor(Qt::green));
        }
        QVERIFY(colorAt(icon.topLeft() - QPoint(2, 0)) != QColor(Qt::green));
    }
    // a selection's colour does not touch the images
    if (enabled) {
        const QRect selected = table.delegate.actionRect(table.model.index(1, Actions), 0);
        QCOMPARE(colorAt(QPoint(selected.left() + 1, selected.center().y())),
                 table.palette().color(QPalette::Base));
    }
}

void TestWidgets::toolTips()
{
    Table table;
    QVERIFY(toolTipAt(table, table.button(0, 1)).contains(QStringLiteral("Second")));
    const auto read = [](const QString& html) {
        return QTextDocumentFragment::fromHtml(html).toPlainText().remove(QChar(0x200B));
    };
    QCOMPARE(read(toolTipAt(table, table.button(0, 2))), QStringLiteral("<b>Third</b>"));
    toolTipAt(table, table.visualRect(table.model.index(0, Time)).center());
    QTRY_COMPARE(QToolTip::text(), QString());

    const QString longName = QStringLiteral("<h1>") + QString(500, QLatin1Char('x')) +
                             QString(QChar(0x202E)) + QStringLiteral("fdp.exe");
    table.model.setData(table.model.index(0, Name), longName, Qt::ToolTipRole);
    const QString shown = toolTipAt(table, table.visualRect(table.model.index(0, Name)).center());
    QVERIFY(Qt::mightBeRichText(shown)); // so the label takes it for what it is
    QCOMPARE(read(shown), longName);
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("QTipLabel"))
            QVERIFY2(widget->width() < 800, "500 characters have to be broken");
    }
    QCOMPARE(table.model.index(0, Name).data(Qt::ToolTipRole).toString(), longName);
}

void TestWidgets::actionColumnIsNotSorted()
{
    Table table;
    const auto clickTitle = [&](int column) {
        const int x = table.header->sectionViewportPosition(column) + table.header->sectionSize(column) / 2;
        QTest::mouseClick(table.header->viewport(), Qt::LeftButton, {}, QPoint(x, 5));
    };
    clickTitle(Time);
    QCOMPARE(table.header->sortIndicatorSection(), int(Time));
    clickTitle(Actions);
    QCOMPARE(table.header->sortIndicatorSection(), int(Time));
    clickTitle(Name);
    QCOMPARE(table.header->sortIndicatorSection(), int(Name));
    table.sortByColumn(Actions, Qt::DescendingOrder);
    QTRY_COMPARE(table.header->sortIndicatorSection(), int(Name));
}

void TestWidgets::actionColumnIsNotNarrow()
{
    Table table;
    const int needed = table.sizeHintForColumn(Actions);
    QVERIFY(needed >= 3 * 16 + 2 * 10 + 2 * 10);
    table.setColumnWidth(Actions, 30);
    QTRY_COMPARE(table.columnWidth(Actions), needed);
    // the user's mouse, at the column's right edge
    const int edge = table.header->sectionViewportPosition(Actions) + needed - 1;
    QTest::mousePress(table.header->viewport(), Qt::LeftButton, {}, QPoint(edge, 5));
    QTest::mouseMove(table.header->viewport(), QPoint(edge - 60, 5));
    QTest::mouseRelease(table.header->viewport(), Qt::LeftButton, {}, QPoint(edge - 60, 5));
    QTRY_COMPARE(table.columnWidth(Actions), needed);

    ActionBarItem more = threeActions();
    more.addAction(plainIcon(Qt::black), QStringLiteral("Fourth"));
    table.model.setData(table.model.index(0, Actions), QVariant::fromValue(more));
    QTRY_VERIFY(table.columnWidth(Actions) > needed);
}

void TestWidgets::stretchedActionColumn_data()
{
    QTest::addColumn<bool>("asLast");
    QTest::newRow("as the last section") << true;
    QTest::newRow("by its mode") << false;
}

void TestWidgets::stretchedActionColumn()
{
    QFETCH(bool, asLast);
    Table table;
    const int needed = table.sizeHintForColumn(Actions);
    table.setColumnWidth(Actions, 20);
    table.header->setSectionResizeMode(Name, QHeaderView::Stretch);
    if (asLast)
        table.header->setStretchLastSection(true);
    else
        table.header->setSectionResizeMode(Actions, QHeaderView::Stretch);
    QTRY_VERIFY(table.columnWidth(Actions) > needed);

    QSignalSpy resized(table.header, &QHeaderView::sectionResized);
    table.resize(table.columnWidth(Time) + needed + 20, 200);
    QTRY_COMPARE(table.columnWidth(Actions), needed);
    // and that was all: nobody pulls it to and fro
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents();
    resized.clear();
    for (int i = 0; i < 50; ++i)
        QCoreApplication::processEvents();
    QCOMPARE(resized.count(), 0);
    QCOMPARE(table.columnWidth(Actions), needed);
    table.resize(700, 200);
    QTRY_VERIFY(table.columnWidth(Actions) > needed);
}

void TestWidgets::timesAreSortedAsTimes()
{
    DateTimeConverter converter;
    converter.setFormat(QStringLiteral("MM/dd/yyyy")); // as text, December 2023 comes last
    converter.setTimeZone(QTimeZone::utc());
    QStandardItemModel source(4, 2);
    const QVector<QDateTime> times{moment(2, 10), QDateTime(QDate(2023, 12, 31), QTime(1, 0), Qt::UTC),
                                   QDateTime(), moment(10, 2)};
    for (int row = 0; row < times.size(); ++row)
        source.setData(source.index(row, 1), times.at(row));
    SortFilterTimeProxyModel proxy(converter, 1);
    proxy.setSourceModel(&source);
    proxy.sort(1, Qt::DescendingOrder);
    QStringList shown;
    for (int row = 0; row < proxy.rowCount(); ++row)
        shown.append(proxy.index(row, 1).data().toString());
    QCOMPARE(shown, (QStringList{QStringLiteral("10/02/2024"), QStringLiteral("02/10/2024"),
                                 QStringLiteral("12/31/2023"), QString()}));
}

void TestWidgets::filterMatchesWhatIsShown()
{
    DateTimeConverter converter;
    converter.setFormat(QStringLiteral("dd.MM.yyyy HH:mm"));
    converter.setTimeZone(QTimeZone::utc());
    QStandardItemModel source(2, 2);
    source.setData(source.index(0, 0), QStringLiteral("one 30"));
    source.setData(source.index(0, 1), moment(1, 15));
    source.setData(source.index(1, 0), QStringLiteral("two"));
    source.setData(source.index(1, 1), moment(3, 30));
    SortFilterTimeProxyModel proxy(converter, 1);
    proxy.setSourceModel(&source);
    proxy.setFilterKeyColumn(1);
    proxy.setFilterFixedString(QStringLiteral("15.01."));
    QCOMPARE(proxy.rowCount(), 1);
    proxy.setFilterFixedString(QStringLiteral("2024-01-15")); // a time's own text, which nobody sees
    QCOMPARE(proxy.rowCount(), 0);
    proxy.setFilterRegularExpression(QStringLiteral("^30\\."));
    QCOMPARE(proxy.rowCount(), 1);
    QCOMPARE(proxy.index(0, 0).data().toString(), QStringLiteral("two"));
    proxy.setFilterKeyColumn(0);
    proxy.setFilterFixedString(QStringLiteral("30"));
    QCOMPARE(proxy.rowCount(), 1);
    QCOMPARE(proxy.index(0, 0).data().toString(), QStringLiteral("one 30"));
    proxy.setFilterKeyColumn(-1);
    QCOMPARE(proxy.rowCount(), 2);

    // the shown text changes with the converter, and with it what matches
    proxy.setFilterKeyColumn(1);
    proxy.setFilterFixedString(QStringLiteral("30.03."));
    QCOMPARE(proxy.rowCount(), 1);
    QSignalSpy changed(&proxy, &QAbstractItemModel::dataChanged);
    converter.setTimeZone(QTimeZone(-13 * 3600));
    QCOMPARE(proxy.rowCount(), 0);
    converter.setFormat(QStringLiteral("'30.03.'"));
    QCOMPARE(proxy.rowCount(), 2);
    QVERIFY(changed.count() > 0);
}

void TestWidgets::converter()
{
    DateTimeConverter converter;
    converter.setLocale(QLocale::c());
    QSignalSpy changed(&converter, &DateTimeConverter::changed);
    const QDateTime time = moment(1, 15);
    QCOMPARE(converter.toText(time), time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")));
    const QLocale american(QLocale::English, QLocale::UnitedStates);
    converter.setLocale(american);
    QCOMPARE(converter.toText(time), american.toString(time.toLocalTime(), QLocale::ShortFormat));
    changed.clear();
    QCOMPARE(converter.toText(QDateTime()), QString());
    converter.setLocale(QLocale(QLocale::German, QLocale::Germany));
    converter.setFormat(QStringLiteral("dddd HH:mm"));
    converter.setTimeZone(QTimeZone(3600));
    QCOMPARE(converter.toText(time), QStringLiteral("Montag 13:30"));
    QCOMPARE(changed.count(), 3);
    converter.setFormat(converter.format());
    QCOMPARE(changed.count(), 3);
    converter.setTimeZone(QTimeZone()); // back to the system's
    QCOMPARE(converter.toZone(time), time);
    QCOMPARE(converter.toZone(time).timeSpec(), Qt::LocalTime);
}

void TestWidgets::sourceThatResetsInARemoval()
{
    DateTimeConverter converter;
    ResettingModel source;
    source.names = QStringList{QStringLiteral("hidden"), QStringLiteral("a"), QStringLiteral("b"),
                               QStringLiteral("c"), QStringLiteral("d")};
    SortFilterTimeProxyModel proxy(converter, -1);
    proxy.setSourceModel(&source);
    proxy.setFilterKeyColumn(0);
    proxy.setFilterRegularExpression(QStringLiteral("^.$"));
    QTableView view; // asks for the rows in between
    view.setModel(&proxy);
    for (const QString& gone : {QStringLiteral("b"), QStringLiteral("d"), QStringLiteral("a")}) {
        source.remove(source.names.indexOf(gone));
        QStringList shown;
        for (int row = 0; row < proxy.rowCount(); ++row)
            shown.append(proxy.index(row, 0).data().toString());
        QCOMPARE(shown, source.names.mid(1));
    }
}

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
