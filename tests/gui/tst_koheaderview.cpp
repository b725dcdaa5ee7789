#include <kovis/koHeaderView.h>

#include <QContextMenuEvent>
#include <QMenu>
#include <QStandardItemModel>
#include <QTimer>
#include <QTreeView>
#include <QtTest>

namespace {

struct MenuEntry
{
    QString text;
    bool checked;
    bool enabled;
};

// Opens the header's context menu, records its entries and triggers the one named
// (none for an empty name) before the menu closes.
QList<MenuEntry> runContextMenu(QHeaderView* header, const QString& trigger)
{
    QList<MenuEntry> entries;
    QTimer::singleShot(0, header, [&entries, trigger] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (QAction* action : menu->actions()) {
            entries.append({action->text(), action->isChecked(), action->isEnabled()});
            if (action->text() == trigger && action->isEnabled())
                action->trigger();
        }
        menu->close();
    });
    const QPoint position(5, header->height() / 2);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, header->viewport()->mapToGlobal(position));
    QApplication::sendEvent(header->viewport(), &event);
    return entries;
}

} // namespace

class tst_koheaderview : public QObject
{
    Q_OBJECT

private slots:
    void contextMenuTogglesHideableSections_data();
    void contextMenuTogglesHideableSections();
};

void tst_koheaderview::contextMenuTogglesHideableSections_data()
{
    QTest::addColumn<QList<int>>("hideable");
    QTest::addColumn<QList<int>>("hiddenBefore");
    QTest::addColumn<QString>("trigger");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QList<int>>("hiddenAfter");

    QTest::newRow("hide a section") << QList<int>{1, 3} << QList<int>() << QStringLiteral("Status")
                                    << QStringList{"Status:on", "Owner:on"} << QList<int>{1};
    QTest::newRow("show a hidden section") << QList<int>{1, 3} << QList<int>{3} << QStringLiteral("Owner")
                                           << QStringList{"Status:on", "Owner:off"} << QList<int>();
    QTest::newRow("fixed sections not offered") << QList<int>() << QList<int>() << QString() << QStringList()
                                                << QList<int>();
    QTest::newRow("last visible section kept") << QList<int>{0, 1, 2, 3} << QList<int>{1, 2, 3}
                                               << QStringLiteral("Name")
                                               << QStringList{"Name:on:fixed", "Status:off", "Modified:off",
                                                              "Owner:off"}
                                               << QList<int>{1, 2, 3};
}

void tst_koheaderview::contextMenuTogglesHideableSections()
{
    QFETCH(QList<int>, hideable);
    QFETCH(QList<int>, hiddenBefore);
    QFETCH(QString, trigger);
    QFETCH(QStringList, entries);
    QFETCH(QList<int>, hiddenAfter);

    QStandardItemModel model(2, 4);
    model.setHorizontalHeaderLabels({"Name", "Status", "Modified", "Owner"});
    QTreeView view;
    view.setModel(&model);
    auto* header = new koHeaderView<QTreeView>(&view);
    QCOMPARE(view.header(), header);
    QCOMPARE(header->parent(), &view);
    for (int section : hideable)
        header->setSectionHideable(section, true);
    for (int section : hiddenBefore)
        header->setSectionHidden(section, true);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    const QList<MenuEntry> shown = runContextMenu(header, trigger);

    QStringList described;
    for (const MenuEntry& entry : shown) {
        described << entry.text + (entry.checked ? ":on" : ":off") + (entry.enabled ? "" : ":fixed");
    }
    QCOMPARE(described, entries);
    QList<int> hidden;
    for (int section = 0; section < header->count(); ++section) {
        if (header->isSectionHidden(section))
            hidden << section;
    }
    QCOMPARE(hidden, hiddenAfter);
}

QTEST_MAIN(tst_koheaderview)
#include "tst_koheaderview.moc"
