#include "actionbarheaderview.h"
#include "actionbaritem.h"
#include "actionbaritemdelegate.h"
#include "datetimeconverter.h"
#include "shorthand.h"
#include "sortfiltertimeproxymodel.h"

#include <QHelpEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QStyleFactory>
#include <QTableView>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QToolTip>

namespace {

enum Column { Name, Time, Actions };
const int rows = 3;

ActionBarItem threeActions()
{
    ActionBarItem item;
    item.setSpacing(10);
    item.setMargin(10);
    for (const char* action : {"red First", "lime Second", "blue <b>Third</b>"}) {
        QPixmap pixmap(16, 16);
        pixmap.fill(s(action).section(QLatin1Char(' '), 0, 0));
        item.addAction(pixmap, s(action).section(QLatin1Char(' '), 1));
    }
    return item;
}

template <typename Model>
QStringList shownTexts(const Model& model, int column = 0)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.index(row, column).data().toString());
    return names;
}

QDateTime moment(int month, int day)
{
    return QDateTime(QDate(2024, month, day), QTime(12, 30), Qt::UTC);
}

ActionBarItem itemAt(const QAbstractItemModel& model, int row)
{
    return model.index(row, Actions).data().value<ActionBarItem>();
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
        for (int row = 0; row < rows; ++row) {
            model.setData(model.index(row, Name), s("row %1").arg(row));
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

    QPoint button(int row, int action) const { return rect(row, action).center(); }
    int clicked(int row) const { return itemAt(model, row).clickedAction(); }
    QRect rect(int row, int action) const { return delegate.actionRect(model.index(row, Actions), action); }
    QImage picture() { return viewport()->grab().toImage(); }
    void click(const QPoint& position, Qt::MouseButton mouseButton = Qt::LeftButton)
    {
        QTest::mouseClick(viewport(), mouseButton, {}, position);
        QCoreApplication::processEvents(); // clicks are written by the event loop
    }
    static void drag(QWidget* area, const QPoint& from, const QPoint& to)
    {
        QTest::mousePress(area, Qt::LeftButton, {}, from);
        QTest::mouseMove(area, to);
        QTest::mouseRelease(area, Qt::LeftButton, {}, to);
        QCoreApplication::processEvents();
    }
    void clickTitle(int column)
    {
        const int x = header->sectionViewportPosition(column) + header->sectionSize(column) / 2;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, 5));
    }

    QStandardItemModel model;
    ActionBarItemDelegate delegate;
    ActionBarHeaderView* header;

    int paintings{0};

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paintings;
        QTableView::paintEvent(event);
    }
};

QString toolTipAt(Table& table, const QPoint& position)
{
    QHelpEvent event(QEvent::ToolTip, position, table.viewport()->mapToGlobal(position));
    QApplication::sendEvent(table.viewport(), &event);
    return QToolTip::text();
}

/// A source that resets between announcing a removal and completing it.
class ResettingModel : public QStringListModel
{
public:
    void remove(const QString& name)
    {
        QStringList names = stringList();
        const int row = names.indexOf(name);
        names.removeAt(row);
        beginRemoveRows(QModelIndex(), row, row);
        setStringList(names);
        endRemoveRows();
    }
};

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clicks_data()
    {
        const Rows<Qt::LayoutDirection> row;
        for (const QString& style : QStyleFactory::keys()) {
            row(qPrintable(style), Qt::LeftToRight);
            row(qPrintable(style + s(", right to left")), Qt::RightToLeft);
        }
    }
    void clicks()
    {
        const auto [direction] = cells<Qt::LayoutDirection>();
        const std::unique_ptr<QStyle> owned(
            QStyleFactory::create(s(QTest::currentDataTag()).section(s(","), 0, 0)));
        Table table;
        table.setStyle(owned.get());
        table.setLayoutDirection(direction);
        for (int action = 0; action < 3; ++action) {
            table.click(table.button(1, action));
            QCOMPARE(table.clicked(1), action);
            QCOMPARE(table.currentIndex().row(), 1);
        }
        QCOMPARE(table.clicked(0), -1);
        const QRect first = table.rect(1, 0);
        const QRect second = table.rect(1, 1);
        QCOMPARE(table.button(1, 2).x() < first.x(), direction == Qt::RightToLeft);
        QCOMPARE(qAbs(second.center().x() - first.center().x()), first.width() + 10);
        // centred in the cell
        const QRect cell = table.visualRect(table.model.index(1, Actions));
        QVERIFY(qAbs(second.center().x() - cell.center().x()) <= 1);
    }

    void clicksThatAreNone()
    {
        Table table;
        QWidget* area = table.viewport();
        QSignalSpy written(&table.model, &QAbstractItemModel::dataChanged);
        const QPoint button = table.button(0, 0);
        Table::drag(area, button, table.button(0, 1));
        QTest::mousePress(area, Qt::LeftButton, {}, button);
        QTest::mouseRelease(area, Qt::LeftButton, {}, table.button(1, 0));
        QTest::mouseRelease(area, Qt::LeftButton, {}, button); // of a press that is over
        table.click(button, Qt::RightButton);
        table.click((button + table.button(0, 1)) / 2); // between two
        QCOMPARE(written.count(), 0);

        table.click(button);
        QTest::mouseDClick(area, Qt::LeftButton, {}, button);
        QTest::mouseRelease(area, Qt::LeftButton, {}, button);
        QCoreApplication::processEvents();
        QCOMPARE(written.count(), 1); // a double click is one click
        QTest::mouseClick(area, Qt::LeftButton, {}, table.button(1, 1));
        QTest::mouseClick(area, Qt::LeftButton, {}, table.button(1, 2)); // the one before is not written yet
        QCoreApplication::processEvents();
        QCOMPARE(written.count(), 2);
        QCOMPARE(table.clicked(1), 1);

        QTest::mouseClick(area, Qt::LeftButton, {}, table.button(0, 1));
        table.model.removeRow(0); // and with it the click, which is none on the row that comes in its place
        QCoreApplication::processEvents();
        table.model.item(1, Actions)->setEnabled(false);
        table.click(table.button(1, 0));
        table.setEnabled(false);
        table.click(table.button(0, 2));
        QCOMPARE(table.clicked(0), 1);
        QCOMPARE(table.clicked(1), -1);
    }

    void clickMayDestroyTheView()
    {
        QStandardItemModel model(1, 3);
        model.setData(model.index(0, Actions), QVariant::fromValue(threeActions()), Qt::DisplayRole);
        const DateTimeConverter converter;
        QPointer<Table> table = new Table;
        auto* proxy = new SortFilterTimeProxyModel(converter, Time, table); // goes too
        proxy->setSourceModel(&model);
        table->setModel(proxy);
        connect(&model, &QAbstractItemModel::dataChanged, this, [&] { delete table; });
        table->click(table->delegate.actionRect(proxy->index(0, Actions), 1).center());
        QVERIFY(!table);
        QCOMPARE(itemAt(model, 0).clickedAction(), 1);
    }

    void hover()
    {
        const std::unique_ptr<QStyle> style(QStyleFactory::create(s("Fusion")));
        Table table;
        table.setStyle(style.get());
        QPalette palette = table.palette();
        palette.setColor(QPalette::Button, Qt::black);
        table.setPalette(palette);
        QWidget* area = table.viewport();
        const QPoint button = table.button(0, 0);
        const QRect rect = table.rect(0, 0);
        QTest::mouseMove(area, table.visualRect(table.model.index(0, Name)).center());
        const QImage still = table.picture();

        QTest::mouseMove(area, button);
        QCOMPARE(area->cursor().shape(), Qt::PointingHandCursor);
        const QImage hovered = table.picture();
        QVERIFY(hovered != still);
        // images are drawn for the background of cells, and not for that of buttons
        QVERIFY(hovered.pixelColor(rect.left() + 1, rect.center().y()).lightness() > 128);
        QCoreApplication::processEvents();
        table.paintings = 0;
        QTest::mouseMove(area, (button + table.button(0, 1)) / 2); // no button, in the same cell
        QTRY_VERIFY(table.paintings > 0);
        QTest::mouseMove(area, button);
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

        // the mouse rests, and the rows do not
        QTest::mouseMove(area, table.button(2, 0));
        QCOMPARE(area->cursor().shape(), Qt::PointingHandCursor);
        table.resize(500, 90);
        table.verticalScrollBar()->setValue(1);
        QTRY_VERIFY(area->cursor().shape() != Qt::PointingHandCursor);
        QTest::mouseMove(area, table.button(1, 0));
        table.model.removeRow(0); // another one comes there
        QTRY_VERIFY(table.picture().copy(table.rect(0, 0)) == hovered.copy(rect));
        QCOMPARE(area->cursor().shape(), Qt::PointingHandCursor);
        table.model.clear();
        QTRY_VERIFY(area->cursor().shape() != Qt::PointingHandCursor);
    }

    void painting_data()
    {
        const Rows<qreal, bool> row; // images' pixels for one of the table, whether it is enabled
        row("plain", 1, true);
        row("twice the density", 2, true);
        row("disabled", 1, false);
    }
    void painting()
    {
        const qreal ratio = std::get<0>(cells<qreal, bool>());
        const bool enabled = std::get<1>(cells<qreal, bool>());
        Table table;
        table.selectRow(1);
        table.setEnabled(enabled);
        QImage image(table.viewport()->size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        table.viewport()->render(&image);
        const auto colorAt = [&](const QPoint& point) { return image.pixelColor(point * ratio); };
        for (int row = 0; row < 2; ++row) { // row 1 is selected
            if (!enabled) {
                QVERIFY(colorAt(table.button(row, 0)).saturation() < 100);
                continue;
            }
            // the whole image is there, and not more
            const QRect icon =
                QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(16, 16), table.rect(row, 1));
            QVERIFY(colorAt(icon.topLeft() - QPoint(2, 0)) != QColor(Qt::green));
            QCOMPARE(colorAt(table.button(row, 0)), QColor(Qt::red));
            QCOMPARE(colorAt(icon.topLeft()), QColor(Qt::green));
            QCOMPARE(colorAt(icon.bottomRight()), QColor(Qt::green));
            // a selection's colour does not touch the images
            const QPoint besideImage(table.rect(1, 0).left() + 1, table.rect(1, 0).center().y());
            QCOMPARE(colorAt(besideImage), table.palette().color(QPalette::Base));
        }
    }

    void toolTips()
    {
        Table table;
        const auto shownAt = [&table](const QPoint& position) {
            const QString html = toolTipAt(table, position);
            if (!html.isEmpty() && !Qt::mightBeRichText(html)) // the label would not break it
                return s("plain");
            return QTextDocumentFragment::fromHtml(html).toPlainText().remove(QChar(0x200B));
        };
        QCOMPARE(shownAt(table.button(0, 1)), s("Second"));
        QCOMPARE(shownAt(table.button(0, 2)), s("<b>Third</b>"));
        toolTipAt(table, table.visualRect(table.model.index(0, Time)).center());
        QTRY_COMPARE(QToolTip::text(), QString());

        const QString longName = s("<h1>") + QString(500, QLatin1Char('x')) + s("\u202Efdp.exe");
        const QModelIndex index = table.model.index(0, Name);
        table.model.setData(index, longName, Qt::ToolTipRole);
        QCOMPARE(shownAt(table.visualRect(index).center()), longName);
        for (const QWidget* widget : QApplication::topLevelWidgets())
            QVERIFY(!widget->inherits("QTipLabel") || widget->width() < 800); // 500 characters are broken
    }

    void actionColumnIsNotSorted()
    {
        Table table;
        for (const auto& [clicked, sorted] :
             {std::make_pair(Time, Time), std::make_pair(Actions, Time), std::make_pair(Name, Name)}) {
            table.clickTitle(clicked);
            QCOMPARE(table.header->sortIndicatorSection(), int(sorted));
        }
        table.sortByColumn(Actions, Qt::DescendingOrder);
        QTRY_COMPARE(table.header->sortIndicatorSection(), int(Name));
    }

    void actionColumnIsNotNarrow()
    {
        Table table;
        const int needed = table.sizeHintForColumn(Actions);
        QVERIFY(needed >= 3 * 16 + 2 * 10 + 2 * 10);
        table.setColumnWidth(Actions, 30);
        QTRY_COMPARE(table.columnWidth(Actions), needed);
        // the user's mouse, at the column's right edge
        const int edge = table.header->sectionViewportPosition(Actions) + needed - 1;
        Table::drag(table.header->viewport(), QPoint(edge, 5), QPoint(edge - 60, 5));
        QTRY_COMPARE(table.columnWidth(Actions), needed);

        ActionBarItem more = threeActions();
        more.addAction(QIcon(), s("Fourth"));
        table.model.setData(table.model.index(0, Actions), QVariant::fromValue(more));
        QTRY_VERIFY(table.columnWidth(Actions) > needed);

        table.header->setActionColumn(Time);
        QCoreApplication::processEvents();
        table.setColumnWidth(Actions, 30);
        QCoreApplication::processEvents();
        table.model.removeColumn(Name); // the actions take the place of the times
        QTRY_VERIFY(table.columnWidth(Time) > needed);
    }

    void stretchedActionColumn()
    {
        for (const bool asLast : {true, false}) { // or by its mode
            Table table;
            const int needed = table.sizeHintForColumn(Actions);
            table.setColumnWidth(Actions, 20);
            table.header->setSectionResizeMode(Name, QHeaderView::Stretch);
            table.header->setStretchLastSection(asLast);
            if (!asLast)
                table.header->setSectionResizeMode(Actions, QHeaderView::Stretch);
            QTRY_VERIFY(table.columnWidth(Actions) > needed);

            QSignalSpy resized(table.header, &QHeaderView::sectionResized);
            table.resize(table.columnWidth(Time) + needed + 20, 200);
            QTRY_COMPARE(table.columnWidth(Actions), needed);
            // and that was all: no endless loop of resizing
            for (int i = 0; i < 60; ++i) {
                if (i == 10)
                    resized.clear();
                QCoreApplication::processEvents();
            }
            QCOMPARE(resized.count(), 0);
            QCOMPARE(table.columnWidth(Actions), needed);
            table.resize(700, 200);
            QTRY_VERIFY(table.columnWidth(Actions) > needed);
        }
    }

    void times()
    {
        DateTimeConverter converter;
        converter.setFormat(s("MM/dd/yyyy")); // as text, December 2023 comes last
        converter.setTimeZone(QTimeZone::utc());
        QStandardItemModel source(4, 2);
        const QDateTime moments[] = {moment(2, 10), moment(1, 1).addDays(-1), QDateTime(), moment(10, 2)};
        for (int row = 0; row < 4; ++row) {
            source.setData(source.index(row, 0), s("10 b c d").split(QLatin1Char(' ')).at(row));
            source.setData(source.index(row, 1), moments[row]);
        }
        SortFilterTimeProxyModel proxy(converter, 1);
        proxy.setSourceModel(&source);
        proxy.sort(1, Qt::DescendingOrder);
        QCOMPARE(shownTexts(proxy, 1).join(QLatin1Char(' ')), s("10/02/2024 02/10/2024 12/31/2023 "));

        // filters match what is shown
        const auto filtered = [&](int column, const char* text) {
            proxy.setFilterKeyColumn(column);
            proxy.setFilterFixedString(s(text));
            return shownTexts(proxy).join(QString());
        };
        QCOMPARE(filtered(1, "2/31/"), s("b"));
        QCOMPARE(filtered(1, "2024-02-10"), QString()); // a time's own text, which nobody sees
        QCOMPARE(filtered(0, "10"), s("10"));
        QCOMPARE(filtered(-1, "10"), s("d10"));
        QCOMPARE(filtered(1, "10"), s("d10"));
        proxy.setFilterRegularExpression(s("^10"));
        QCOMPARE(shownTexts(proxy), QStringList{s("d")});
        QCOMPARE(filtered(1, "10/02"), s("d"));

        // which changes with the converter
        QSignalSpy changed(&proxy, &QAbstractItemModel::dataChanged);
        converter.setTimeZone(QTimeZone(-13 * 3600));
        QCOMPARE(proxy.rowCount(), 0);
        QCOMPARE(changed.count(), 0);
        converter.setFormat(s("'10/02'"));
        QCOMPARE(proxy.rowCount(), 3);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex(), proxy.index(0, 1));
        QCOMPARE(changed.first().at(1).toModelIndex(), proxy.index(2, 1));
    }

    void converter()
    {
        DateTimeConverter converter;
        QSignalSpy changed(&converter, &DateTimeConverter::changed);
        const QDateTime time = moment(1, 15);
        const QLocale american(QLocale::English, QLocale::UnitedStates);
        converter.setLocale(american);
        QCOMPARE(converter.toText(time), american.toString(time.toLocalTime(), QLocale::ShortFormat));
        converter.setLocale(QLocale::c());
        QCOMPARE(converter.toText(time), time.toLocalTime().toString(s("yyyy-MM-dd HH:mm")));
        QCOMPARE(converter.toText(QDateTime()), QString());
        changed.clear();
        for (int times : {1, 2}) { // the second time changes nothing
            converter.setLocale(QLocale(QLocale::German, QLocale::Germany));
            converter.setFormat(s("dddd HH:mm"));
            converter.setTimeZone(QTimeZone(3600));
            QVERIFY2(changed.count() == 3, QByteArray::number(times));
        }
        QCOMPARE(converter.toText(time), s("Montag 13:30"));
        converter.setTimeZone(QTimeZone()); // back to the system's
        QCOMPARE(converter.toZone(time), time);
        QCOMPARE(converter.toZone(time).timeSpec(), Qt::LocalTime);
    }

    void sourceThatResetsInARemoval()
    {
        const DateTimeConverter converter;
        ResettingModel source;
        source.setStringList({s("hidden"), s("a"), s("b"), s("c"), s("d")});
        SortFilterTimeProxyModel proxy(converter, -1);
        proxy.setSourceModel(&source);
        proxy.setFilterKeyColumn(0);
        proxy.setFilterRegularExpression(s("^.$"));
        QTableView view; // asks for the rows in between
        view.setModel(&proxy);
        for (const char* gone : {"b", "d", "a"}) {
            source.remove(s(gone));
            QCOMPARE(shownTexts(proxy), source.stringList().mid(1));
        }
    }
};

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
