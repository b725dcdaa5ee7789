#include "koBestOf.h"
#include "koTestHost.h"

#include <kovis/koItemModel.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koNodeModelItem.h>
#include <kovis/koNodeService.h>

#include <QApplication>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

#include <algorithm>
#include <cstdio>
#include <functional>

// Reload, id look-up and node selection of koItemModel over 100,000 scene nodes, each
// beside a baseline built from Qt's own classes in the same run.
namespace {

constexpr int groups = 100;
constexpr int perGroup = 1000;

void report(const char* what, double ours, const char* baseline, double theirs, const char* unit = "ms")
{
    std::printf("%-40s %10.3f %s   %-48s %10.3f %s   ratio %.3f\n", what, ours, unit, baseline, theirs, unit,
                ours / theirs);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    koTestHost host;
    auto* nodes = koKernelServiceFactory::the()->getServiceOrNull<koNodeService>();
    const kodNode root = nodes->getRootNode();
    QList<kodNode> all;
    for (int group = 0; group < groups; ++group) {
        const kodNode parent = nodes->createGroupNode(root, QStringLiteral("Group %1").arg(group));
        for (int child = 0; child < perGroup; ++child)
            all << nodes->createGroupNode(parent, QStringLiteral("Node %1").arg(child));
    }

    koItemModel model;
    model.setHeader({"References", "#", "Status"});
    model.setRootItem(new koNodeModelItem(root));
    QStandardItemModel standard;
    const double reload = bestOf([&] { model.reload(); });
    const double standardBuild = bestOf([&] {
        standard.clear();
        for (int group = 0; group < groups; ++group) {
            auto* parent = new QStandardItem(QStringLiteral("Group %1").arg(group));
            QList<QStandardItem*> rows;
            rows.reserve(perGroup);
            for (int child = 0; child < perGroup; ++child)
                rows << new QStandardItem(QStringLiteral("Node %1.%2").arg(group).arg(child));
            parent->appendRows(rows);
            standard.appendRow(parent);
        }
    });
    report("reload 100,100 items", reload, "QStandardItemModel build, names only", standardBuild);

    QList<QVariant> ids;
    for (const kodNode& node : all)
        ids << QVariant::fromValue(node);
    model.reload();
    const double indexBuild = bestOf([&] { model.findItemById(ids.first()); }, 1);
    const double lookUps = bestOf([&] {
        for (const QVariant& id : ids)
            model.indexFromId(id);
    });
    const QString last = QStringLiteral("Node %1.%2").arg(groups - 1).arg(perGroup - 1);
    const double scans = bestOf([&] {
        for (int i = 0; i < 10; ++i)
            standard.match(standard.index(0, 0), Qt::DisplayRole, last, 1, Qt::MatchRecursive | Qt::MatchExactly);
    });
    std::printf("id index built on the first look-up after a reload: %.1f ms\n", indexBuild);
    report("one id look-up", lookUps * 1000 / ids.size(), "one QAbstractItemModel::match, recursive", scans * 100, "us");

    QSortFilterProxyModel proxy;
    proxy.setSourceModel(&model);
    koNodeBasedSelectionModel selection(&proxy);
    QList<kodNode> every7th;
    QList<kodNode> every11th;
    for (int i = 0; i < all.size(); ++i) {
        if (i % 7 == 0)
            every7th << all.at(i);
        if (i % 11 == 0)
            every11th << all.at(i);
    }
    const double select = bestOf([&] {
        selection.selectNodes(every7th);
        selection.selectNodes(every11th);
    });
    QItemSelectionModel plain(&proxy);
    const double plainSelect = bestOf([&] {
        for (const QList<kodNode>* list : {&every7th, &every11th}) {
            QItemSelection rows;
            for (const kodNode& node : *list)
                rows.select(proxy.mapFromSource(model.indexFromId(QVariant::fromValue(node))),
                            proxy.mapFromSource(model.indexFromId(QVariant::fromValue(node))));
            plain.select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        }
    }, 1);
    report("select 14,286 then 9,091 nodes", select, "QItemSelectionModel::select, ClearAndSelect|Rows",
           plainSelect);
    return 0;
}
