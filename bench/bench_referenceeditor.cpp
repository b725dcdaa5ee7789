#include "koBenchScene.h"
#include "koReferenceEditorModule.h"
#include "koReferenceFilterModel.h"
#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <functional>

// The reference window over 100,000 references (100 assemblies of 10 sub-assemblies of
// 100 parts, each part with a smart and a source file): reload and search, beside a
// window built the plain Qt way in the same run.
namespace {

constexpr int runs = 7;

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double medianMs(const std::function<void()>& work, const std::function<void()>& prepare = [] {})
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        prepare();
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    return median(times);
}

void print(const char* name, double value)
{
    std::printf("%s: %.1f ms\n", name, value);
}

void printRatio(const char* name, double ours, double baseline)
{
    std::printf("%s ratio: %.2f\n", name, ours / baseline);
}

void settle()
{
    for (int turn = 0; turn < 3; ++turn)
        QCoreApplication::processEvents();
}

// The baseline: every text of a row made up front into a QStandardItem.
QList<QStandardItem*> standardRow(const kodReferenceNode& reference, koReferenceModelItem& texts)
{
    QList<QStandardItem*> row{new QStandardItem(koReferenceTreeModel::displayText(reference))};
    for (int column = 1; column < koReferenceModelItem::ColumnCount; ++column)
        row.append(new QStandardItem(texts.data(column, Qt::DisplayRole).toString()));
    return row;
}

void addStandardRows(QStandardItem* parent, const kodNode& node)
{
    for (const kodNode& child : koReferenceModelItem::referencesBelow(node)) {
        koReferenceModelItem texts(child, false, nullptr);
        const QList<QStandardItem*> row = standardRow(kodReferenceNode(child.getObjectId()), texts);
        parent->appendRow(row);
        addStandardRows(row.first(), child);
    }
}

struct PlainWindow
{
    QStandardItemModel model;
    QSortFilterProxyModel proxy;
    QTreeView views[3];

    PlainWindow()
    {
        proxy.setSourceModel(&model);
        proxy.setRecursiveFilteringEnabled(true);
        for (QTreeView& view : views) {
            view.setModel(&proxy);
            view.setUniformRowHeights(true);
            view.resize(400, 600);
            view.show();
        }
    }

    void rebuild()
    {
        model.clear();
        const kodNode root = koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>()->getSceneReferences().first();
        koReferenceModelItem texts(root, false, nullptr);
        const QList<QStandardItem*> row = standardRow(kodReferenceNode(root.getObjectId()), texts);
        model.appendRow(row);
        addStandardRows(row.first(), root);
    }
};

long peakMemoryKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

void repaintViews(koReferenceEditorModule& window)
{
    for (QTreeView* view : {window.m_treeView, window.m_smartColumns, window.m_sourceColumns})
        view->viewport()->repaint();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    koTestHost host;
    const QString project = koBenchScene::write(host, koBenchScene::partsFrom(application.arguments()));
    QElapsedTimer loading;
    loading.start();
    koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>()->loadProject(project);
    // Monitoring reads 200,000 files every few seconds; its own cost is not measured here.
    koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>()->setChangeMonitoringEnabled(false);
    print("project load", loading.nsecsElapsed() / 1e6);
    std::printf("peak memory after project load: %.1f MB\n", peakMemoryKb() / 1024.0);

    koReferenceEditorModule window;
    window.resize(1200, 800);
    window.show();
    settle();
    const double reload = medianMs([&] {
        window.scheduleReload();
        settle();
        repaintViews(window);
    });

    print("reloadModel", reload);
    if (!application.arguments().contains(QStringLiteral("--without-baseline"))) {
        PlainWindow plain;
        const double baseline = medianMs([&] {
            plain.rebuild();
            settle();
            for (QTreeView& view : plain.views)
                view.viewport()->repaint();
        });
        print("reloadModel baseline (QStandardItemModel)", baseline);
        printRatio("reloadModel", reload, baseline);
    }

    window.expandAllRows();
    settle();
    const QStringList patterns{".17", ".23", ".42", ".58", ".71", ".86", ".93"};
    int next = 0;
    const auto typeKeystroke = [&] {
        window.filterModel()->setSearchText(QRegExp(patterns.at(next++ % patterns.size()), Qt::CaseInsensitive,
                                                    QRegExp::FixedString));
        window.expandAllRows();
        repaintViews(window);
    };
    print("search keystroke (1% of rows match, all expanded)", medianMs(typeKeystroke));
    // What typing does in the window: the search box feeds the filter, which expands
    // the view to every match.
    print("search box keystroke (1% of rows match)", medianMs([&] {
              window.m_searchBox->setText(patterns.at(next++ % patterns.size()));
              repaintViews(window);
          }));
    // A search that every part matches opens every row of the three views.
    print("search keystroke (every part matches)", medianMs([&] {
              window.m_searchBox->setText(next++ % 2 ? QStringLiteral("part") : QStringLiteral("PART"));
              repaintViews(window);
          }));
    window.m_searchBox->clear();
    settle();
    // The depth slider opens every level of the graph, then closes all but the first.
    print("depth slider to the bottom and back", medianMs([&] {
              window.m_treeSlider->setValue(window.m_treeSlider->maximum());
              repaintViews(window);
              window.m_treeSlider->setValue(1);
              repaintViews(window);
          }));
    // Rows make their texts on first use after a reload; the first keystroke pays for it.
    print("first search keystroke after a reload", medianMs(typeKeystroke, [&] {
              window.scheduleReload();
              settle();
          }));
    std::printf("peak memory: %.1f MB\n", peakMemoryKb() / 1024.0);
    return 0;
}
