#include "koOsbFile.h"
#include "koReferenceFilterModel.h"
#include "koReferenceFlatModelItem.h"
#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"
#include "koReferenceTreeRootItem.h"
#include "koTestHost.h"
#include "koTextMatcher.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QJsonArray>
#include <QStandardItemModel>
#include <QtTest>

// Counts the rows the proxy looks at, to see that a filter change re-runs the filter.
class koCountingFilterModel : public koReferenceFilterModel
{
public:
    mutable int tests = 0;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override
    {
        ++tests;
        return koReferenceFilterModel::filterAcceptsRow(sourceRow, sourceParent);
    }
};

class tst_koReferenceFilterModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void filters_data();
    void filters();
    void searchesTheSameColumnsOfAnyModel_data();
    void searchesTheSameColumnsOfAnyModel();
    void turningOffAnAbsentKeyStillRefilters();
    void searchExpressions_data();
    void searchExpressions();
    void plainMatchingAgreesWithTheExpression_data();
    void plainMatchingAgreesWithTheExpression();
    // Last: it loads a scene of its own.
    void searchAheadAgreesWithRowByRow_data();
    void searchAheadAgreesWithRowByRow();

private:
    koTestHost m_host;
    koReferenceTreeModel m_model;
};

namespace {

QStringList visibleNames(const QAbstractItemModel& model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.index(row, 0).data(Qt::UserRole).value<kodNode>().getName());
    names.sort();
    return names;
}

// Every row's name, depth first.
QStringList namesBelow(const QAbstractItemModel& model, const QModelIndex& parent = QModelIndex())
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        names.append(index.data(Qt::UserRole).value<kodNode>().getName());
        names.append(namesBelow(model, index));
    }
    return names;
}

// "2" turns key 2 on; "8:osb" turns the file-type key on for suffix osb.
void applyFlags(koReferenceFilterModel& filter, const QStringList& flags)
{
    for (const QString& flag : flags) {
        const QStringList parts = flag.split(QLatin1Char(':'));
        filter.setFilterFlag(parts.first().toInt(), true, parts.value(1));
    }
}

QRegExp search(const QString& text)
{
    return QRegExp(text, Qt::CaseSensitive, QRegExp::FixedString);
}

QRegExp anyCase(const QString& text, QRegExp::PatternSyntax syntax = QRegExp::FixedString)
{
    return QRegExp(text, Qt::CaseInsensitive, syntax);
}

} // namespace

void tst_koReferenceFilterModel::initTestCase()
{
    m_host.writeProject(QStringLiteral("a.kpr"), {koTestHost::geometry("Body")});
    m_host.writeFile(QStringLiteral("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no A\nf 1 2 3\n");
    koSceneNodeDesc osb;
    osb.name = QStringLiteral("C");
    m_host.writeFile(QStringLiteral("c.osb"), koOsbFile::serialize(osb));
    m_host.writeFile(QStringLiteral("d.OBJ"), "o D\nf 1 1 1\n");
    m_host.writeProject(QStringLiteral("f.kpr"), {koTestHost::geometry("Panel")});
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("A", "a.kpr", "a.obj", {{"sourceImported", "2001-01-01T00:00:00Z"}}),
         koTestHost::reference("B", QString(), "b.obj"), koTestHost::reference("C", "c.osb", QString()),
         koTestHost::reference("D", "d.kpr", "d.OBJ"), koTestHost::reference("E", QString(), QString()),
         koTestHost::reference("F", "f.kpr", QString())});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    koService<koReferenceService>()->getSceneReferences().last().getChild(0).setName(
        QStringLiteral("Edited"));
    m_model.setHeader(koReferenceTreeModel::columnTitles());
    m_model.setRootItem(new koReferenceFlatModelItem(kodNode()));
    QCOMPARE(m_model.rowCount(), 7);
}

void tst_koReferenceFilterModel::filters_data()
{
    QTest::addColumn<QStringList>("flags");
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("expected");

    QTest::newRow("nothing chosen") << QStringList() << QString() << "A B C D E F project";
    QTest::newRow("loaded") << QStringList{"0"} << QString() << "A C E F project";
    QTest::newRow("unloaded") << QStringList{"1"} << QString() << "B D";
    QTest::newRow("up to date, either link") << QStringList{"2"} << QString() << "A C D F project";
    QTest::newRow("out of date") << QStringList{"3"} << QString() << "A";
    QTest::newRow("missing") << QStringList{"4"} << QString() << "B D";
    QTest::newRow("source references") << QStringList{"5"} << QString() << "A B D";
    QTest::newRow("smart references") << QStringList{"6"} << QString() << "A C D F project";
    QTest::newRow("modified") << QStringList{"7"} << QString() << "F";
    QTest::newRow("file type osb") << QStringList{"8:osb"} << QString() << "C";
    QTest::newRow("file type is case-sensitive") << QStringList{"8:OSB"} << QString() << "";
    QTest::newRow("file type obj") << QStringList{"8:obj"} << QString() << "A B";
    QTest::newRow("file type OBJ") << QStringList{"8:OBJ"} << QString() << "D";
    QTest::newRow("two file types") << QStringList{"8:osb", "8:OBJ"} << QString() << "C D";
    QTest::newRow("keys combine with or") << QStringList{"3", "1"} << QString() << "A B D";
    QTest::newRow("search in the name column") << QStringList() << "a.obj" << "A";
    QTest::newRow("search is case-sensitive here") << QStringList() << "C.OSB" << "";
    QTest::newRow("search and keys") << QStringList{"1"} << ".OBJ" << "D";
    QTest::newRow("search matching only the date column") << QStringList() << "----" << "";
}

void tst_koReferenceFilterModel::filters()
{
    QFETCH(QStringList, flags);
    QFETCH(QString, search);
    QFETCH(QString, expected);

    koReferenceFilterModel filter;
    filter.setSourceModel(&m_model);
    applyFlags(filter, flags);
    filter.setSearchText(::search(search));
    QCOMPARE(visibleNames(filter).join(QLatin1Char(' ')), expected);
    QCOMPARE(filter.isFilterEmpty(), flags.isEmpty() && search.isEmpty());
}

void tst_koReferenceFilterModel::searchesTheSameColumnsOfAnyModel_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("found");

    for (int column = 0; column < koReferenceModelItem::ColumnCount; ++column)
        QTest::addRow("column %d", column) << column << (column == 0 || column == 5 || column == 9);
}

void tst_koReferenceFilterModel::searchesTheSameColumnsOfAnyModel()
{
    QFETCH(int, column);
    QFETCH(bool, found);

    QStandardItemModel plain(1, koReferenceModelItem::ColumnCount);
    for (int cell = 0; cell < koReferenceModelItem::ColumnCount; ++cell)
        plain.setItem(0, cell, new QStandardItem(QStringLiteral("text %1").arg(cell)));
    koReferenceFilterModel filter;
    filter.setSourceModel(&plain);
    filter.setSearchText(search(QStringLiteral("text %1").arg(column)));
    QCOMPARE(filter.rowCount(), found ? 1 : 0);
}

void tst_koReferenceFilterModel::turningOffAnAbsentKeyStillRefilters()
{
    koCountingFilterModel filter;
    filter.setSourceModel(&m_model);
    filter.setFilterFlag(FilterOutOfDate, true, QString());
    QCOMPARE(visibleNames(filter), QStringList{QStringLiteral("A")});
    filter.setFilterFlag(FilterOutOfDate, false, QString());
    QCOMPARE(visibleNames(filter).size(), 7);
    filter.tests = 0;
    filter.setFilterFlag(FilterMissing, false, QString());
    QCOMPARE(visibleNames(filter).size(), 7);
    QVERIFY(filter.tests >= m_model.rowCount());
    filter.setFilterFlag(FilterFileType, true, QStringLiteral("osb"));
    filter.setFilterFlag(FilterFileType, false, QStringLiteral("kpr"));
    QCOMPARE(visibleNames(filter), QStringList{QStringLiteral("C")});
    filter.setFilterFlag(FilterFileType, false, QStringLiteral("osb"));
    QVERIFY(filter.isFilterEmpty());
}

void tst_koReferenceFilterModel::searchExpressions_data()
{
    QTest::addColumn<QRegExp>("expression");
    QTest::addColumn<bool>("throughBase");
    QTest::addColumn<QString>("expected");

    QTest::newRow("plain text") << anyCase("plain") << false << "Plain part";
    QTest::newRow("plain text through the base class") << anyCase("plain") << true << "Plain part";
    QTest::newRow("Kelvin sign folds to k") << anyCase("KELVIN") << false << "\u212Aelvin scale";
    QTest::newRow("long s folds to s") << anyCase("measure") << true << "Mea\u017Fure";
    QTest::newRow("no folding with case") << search("kelvin") << false << "";
    QTest::newRow("regular expression through the base class") << QRegExp("^Mea.ure$") << true << "Mea\u017Fure";
    QTest::newRow("wildcard through the base class")
        << QRegExp("*.OBJ", Qt::CaseSensitive, QRegExp::Wildcard) << true << "Plain part";
    QTest::newRow("empty expression through the base class")
        << anyCase("") << true << "Mea\u017Fure Plain part \u212Aelvin scale";
}

void tst_koReferenceFilterModel::searchExpressions()
{
    QFETCH(QRegExp, expression);
    QFETCH(bool, throughBase);
    QFETCH(QString, expected);

    QStandardItemModel plain(0, koReferenceModelItem::ColumnCount);
    const QList<QPair<QString, QString>> rows{{QStringLiteral("\u212Aelvin scale"), QStringLiteral("/src/scale.obj")},
                                              {QStringLiteral("Mea\u017Fure"), QStringLiteral("/src/measure.obj")},
                                              {QStringLiteral("Plain part"), QStringLiteral("/src/part.OBJ")}};
    for (const auto& row : rows) {
        QList<QStandardItem*> cells;
        for (int column = 0; column < koReferenceModelItem::ColumnCount; ++column)
            cells.append(new QStandardItem(QStringLiteral("-")));
        cells.at(0)->setText(row.first);
        cells.at(koReferenceModelItem::SourceLocationColumn)->setText(row.second);
        plain.appendRow(cells);
    }
    koReferenceFilterModel filter;
    filter.setSourceModel(&plain);
    if (throughBase)
        filter.QSortFilterProxyModel::setFilterRegExp(expression);
    else
        filter.setSearchText(expression);

    QStringList shown;
    for (int row = 0; row < filter.rowCount(); ++row)
        shown.append(filter.index(row, 0).data().toString());
    shown.sort();
    QCOMPARE(shown.join(QLatin1Char(' ')), expected);
    QCOMPARE(filter.isFilterEmpty(), expression.isEmpty());
}

void tst_koReferenceFilterModel::plainMatchingAgreesWithTheExpression_data()
{
    QTest::addColumn<QRegExp>("expression");

    QTest::newRow("k without case") << anyCase("k");
    QTest::newRow("ks without case") << anyCase("Ks");
    QTest::newRow("ss without case") << anyCase("ss");
    QTest::newRow("i without case") << anyCase("i");
    QTest::newRow("Kelvin sign as the search") << anyCase("\u212A");
    QTest::newRow("long s as the search") << anyCase("\u017F");
    QTest::newRow("sharp s as the search") << anyCase("\u00DF");
    QTest::newRow("k with case") << search("k");
    QTest::newRow("regular expression") << anyCase("k.l", QRegExp::RegExp);
    QTest::newRow("wildcard") << anyCase("*s?", QRegExp::Wildcard);
}

void tst_koReferenceFilterModel::plainMatchingAgreesWithTheExpression()
{
    QFETCH(QRegExp, expression);

    const koTextMatcher matcher(expression);
    const QStringList texts{"",           "kelvin",         "KELVIN",         "\u212Aelvin", "Ma\u017F\u017F",
                            "MASS",       "Stra\u00DFe",   "STRASSE",        "\u0130stanbul", "\u0131i",
                            "x\u212A",   "\u017Fk",       "\U00010400", "plain k",        "kl"};
    for (const QString& text : texts)
        QVERIFY2(matcher.matches(text) == (text.indexOf(expression) >= 0), qPrintable(text));
}

void tst_koReferenceFilterModel::searchAheadAgreesWithRowByRow_data()
{
    QTest::addColumn<QRegExp>("expression");
    QTest::addColumn<bool>("graph");

    for (const bool graph : {false, true}) {
        const char* const shape = graph ? "graph" : "list";
        QTest::addRow("%s, plain without case", shape) << anyCase("BOLT 12") << graph;
        QTest::addRow("%s, the project alone", shape) << anyCase("MANY") << graph;
        QTest::addRow("%s, plain with case", shape) << search("b4") << graph;
        QTest::addRow("%s, regular expression", shape) << QRegExp("^Bolt \\d*7 ") << graph;
        QTest::addRow("%s, wildcard", shape) << anyCase("*9?.obj", QRegExp::Wildcard) << graph;
    }
}

void tst_koReferenceFilterModel::searchAheadAgreesWithRowByRow()
{
    QFETCH(QRegExp, expression);
    QFETCH(bool, graph);

    // More references than one thread's share of a search.
    QJsonArray references;
    for (int at = 0; at < 5000; ++at) {
        references.append(koTestHost::reference(QStringLiteral("Bolt %1").arg(at), QString(),
                                                QStringLiteral("b%1.obj").arg(at), {{"loaded", false}}));
    }
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.writeProject(QStringLiteral("many.kpr"), references)));
    koReferenceTreeModel model;
    model.setHeader(koReferenceTreeModel::columnTitles());
    model.setRootItem(graph ? static_cast<koModelItem*>(new koReferenceTreeRootItem(kodNode()))
                            : new koReferenceFlatModelItem(kodNode()));
    koReferenceFilterModel ahead;
    ahead.setRecursiveFilteringEnabled(true);
    ahead.setSourceModel(&model);
    // Views read the rows as soon as the layout changes, while the search is applied.
    QStringList seenByViews;
    connect(&ahead, &QAbstractItemModel::layoutChanged, this, [&] { seenByViews = namesBelow(ahead); });
    ahead.setSearchText(expression);
    koReferenceFilterModel rowByRow;
    rowByRow.setRecursiveFilteringEnabled(true);
    rowByRow.setSourceModel(&model);
    rowByRow.QSortFilterProxyModel::setFilterRegExp(expression);

    QVERIFY(!seenByViews.isEmpty());
    QCOMPARE(seenByViews, namesBelow(rowByRow));
    QCOMPARE(namesBelow(ahead), seenByViews);
}

QTEST_MAIN(tst_koReferenceFilterModel)
#include "tst_koreferencefiltermodel.moc"
