#include "koReferenceFilterModel.h"
#include "koReferenceFlatModelItem.h"
#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"
#include "koTextMatcher.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>

#include <QStandardItemModel>
#include <QtTest>

class tst_koReferenceFilterModel : public QObject
{
    Q_OBJECT

private slots:
    void keysCombineWithOrAndFileTypesKeepTheirCase();
    void searchesTheSameColumnsOfAnyModel();
    void plainMatchingAgreesWithTheExpression();

private:
    koTestHost m_host;
};

namespace {

QRegExp search(const QString& text, Qt::CaseSensitivity sensitivity = Qt::CaseSensitive)
{
    return QRegExp(text, sensitivity, QRegExp::FixedString);
}

} // namespace

void tst_koReferenceFilterModel::keysCombineWithOrAndFileTypesKeepTheirCase()
{
    for (const QString& name : {QStringLiteral("a.obj"), QStringLiteral("d.OBJ")})
        m_host.writeFile(name, "v 0 0 0\nv 1 0 0\nv 0 1 0\no A\nf 1 2 3\n");
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("A", QString(), "a.obj", {{"sourceImported", "2001-01-01T00:00:00Z"}}),
         koTestHost::reference("D", QString(), "d.OBJ")});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    koReferenceTreeModel model;
    model.setHeader(koReferenceTreeModel::columnTitles());
    model.setRootItem(new koReferenceFlatModelItem(kodNode()));
    koReferenceFilterModel filter;
    filter.setSourceModel(&model);

    // A is out of date with a source ".obj"; D is up to date with a source ".OBJ".
    filter.setFilterFlag(FilterOutOfDate, true, QString());
    filter.setFilterFlag(FilterFileType, true, QStringLiteral("OBJ"));
    QStringList names;
    for (int row = 0; row < filter.rowCount(); ++row)
        names.append(filter.index(row, 0).data(Qt::UserRole).value<kodNode>().getName());
    names.sort();
    QCOMPARE(names, (QStringList{"A", "D"}));
}

void tst_koReferenceFilterModel::searchesTheSameColumnsOfAnyModel()
{
    QStandardItemModel plain(1, koReferenceModelItem::ColumnCount);
    for (int cell = 0; cell < koReferenceModelItem::ColumnCount; ++cell)
        plain.setItem(0, cell, new QStandardItem(QStringLiteral("text %1").arg(cell)));
    koReferenceFilterModel filter;
    filter.setSourceModel(&plain);
    QList<int> found;
    for (int column = 0; column < koReferenceModelItem::ColumnCount; ++column) {
        filter.setSearchText(search(QStringLiteral("text %1").arg(column)));
        if (filter.rowCount() == 1)
            found.append(column);
    }
    QCOMPARE(found, (QList<int>{koReferenceModelItem::NameColumn, koReferenceModelItem::SmartLocationColumn,
                                koReferenceModelItem::SourceLocationColumn}));
}

// The fast path for plain text must fold case as the expression does (the Kelvin sign, the long s).
void tst_koReferenceFilterModel::plainMatchingAgreesWithTheExpression()
{
    const QStringList texts{"", "KELVIN", "\u212Aelvin", "Ma\u017F\u017F", "MASS", "Stra\u00DFe",
                            "x\u212A", "\u017Fk", "\U00010400", "\u0130stanbul", "\u0131i"};
    QStringList disagreements;
    for (const QRegExp& expression : {search("k", Qt::CaseInsensitive), search("Ks", Qt::CaseInsensitive),
                                      search("ss", Qt::CaseInsensitive), search("i", Qt::CaseInsensitive),
                                      search("\u212A", Qt::CaseInsensitive), search("k"),
                                      QRegExp("*s?", Qt::CaseInsensitive, QRegExp::Wildcard)}) {
        for (const QString& text : texts) {
            if (koTextMatcher(expression).matches(text) != (text.indexOf(expression) >= 0))
                disagreements.append(expression.pattern() + QLatin1Char(' ') + text);
        }
    }
    QCOMPARE(disagreements, QStringList());
}

QTEST_MAIN(tst_koReferenceFilterModel)
#include "tst_koreferencefiltermodel.moc"
