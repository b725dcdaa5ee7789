#include "HtmlDelegate.h"
#include "koReferenceFlatModelItem.h"
#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>
#include <kovis/koStyle.h>

#include <QRegularExpression>
#include <QTextDocument>
#include <QtTest>

class tst_koReferenceTreeModel : public QObject
{
    Q_OBJECT

private slots:
    void displayText_data();
    void displayText();
    void lockedWinsOverHiddenInTheColour();
    void fileColumns();

private:
    koTestHost m_host;
};

namespace {

QString colored(const QColor& color, const QString& label)
{
    return QStringLiteral("<font color=\"%1\">%2</font>").arg(color.name(), label);
}

QString upToDate(const QString& label)
{
    return colored(koStyle::getReferenceUpToDateColor(), label);
}

} // namespace

// A model with the reference view's ten columns.
struct ReferenceModel : koReferenceTreeModel
{
    explicit ReferenceModel(koModelItem* root)
    {
        setHeader(columnTitles());
        setRootItem(root);
    }
};

void tst_koReferenceTreeModel::displayText_data()
{
    QTest::addColumn<QJsonObject>("reference");
    QTest::addColumn<QString>("setup");
    QTest::addColumn<QString>("expected");

    QTest::newRow("changed, smart file named after the node, missing source")
        << koTestHost::reference("Engine", "Engine.kpr", "engine_v2.CATProduct") << "rename child"
        << "*Engine [" + upToDate("kpr") + " | " + colored(koStyle::getReferenceMissingColor(), "engine_v2.CATProduct")
               + "]";
    QTest::newRow("smart file named after the node but for case")
        << koTestHost::reference("Motor", "motor.kpr", QString()) << QString() << "Motor [" + upToDate("motor.kpr") + "]";
    QTest::newRow("links without paths") << koTestHost::reference("Bare", "", "") << QString() << "Bare";
    QTest::newRow("out of date source")
        << koTestHost::reference("Wheel", QString(), "rim.obj", {{"sourceImported", "2001-01-01T00:00:00Z"}})
        << QString() << "Wheel [" + colored(koStyle::getReferenceOutOfDateColor(), "rim.obj") + "]";
    QTest::newRow("name that reads as markup") << koTestHost::reference("Bolt<M8> & Nut", QString(), "rim.obj")
                                               << QString() << "Bolt<M8> & Nut [" + upToDate("rim.obj") + "]";
    // Content never written is a change: it would be lost without a save.
    QTest::newRow("unsaved smart link") << koTestHost::reference("Wheel", QString(), "rim.obj") << "convert"
                                        << "*Wheel [" + upToDate("rim.obj") + "]";
}

void tst_koReferenceTreeModel::displayText()
{
    QFETCH(QJsonObject, reference);
    QFETCH(QString, setup);
    QFETCH(QString, expected);

    m_host.writeProject(QStringLiteral("Engine.kpr"), {koTestHost::geometry("Block")});
    m_host.writeProject(QStringLiteral("motor.kpr"), {koTestHost::geometry("Block")});
    m_host.writeFile(QStringLiteral("rim.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Rim\nf 1 2 3\n");
    kodReferenceNode node = m_host.loadSingleReference(reference);
    QVERIFY(node.isValid());
    if (setup == "rename child")
        node.getChild(0).setName(QStringLiteral("Edited"));
    if (setup == "convert")
        koService<koReferenceService>()->convertToSmartReference(node);

    ReferenceModel model(new koReferenceFlatModelItem(kodNode()));
    const QModelIndex row = model.indexFromId(QVariant::fromValue(kodNode(node.getObjectId())), 0);
    QCOMPARE(row.data().toString(), expected);
    // What the views paint: the same words, only the labels taken as markup.
    QTextDocument painted;
    painted.setHtml(row.data(HtmlDelegate::RichTextRole).toString());
    const QRegularExpression labelTags(QStringLiteral("<font color=\"#\\w+\">|</font>"));
    QCOMPARE(painted.toPlainText(), QString(expected).remove(labelTags));
}

void tst_koReferenceTreeModel::lockedWinsOverHiddenInTheColour()
{
    const kodReferenceNode node = m_host.loadSingleReference(
        koTestHost::reference("Part", QString(), QString(), {{"locked", true}, {"visible", false}}));
    ReferenceModel model(new koReferenceFlatModelItem(kodNode()));
    QCOMPARE(model.indexFromId(QVariant::fromValue(kodNode(node.getObjectId()))).data(Qt::ForegroundRole),
             QVariant(koStyle::getLockedItemColor()));
}

void tst_koReferenceTreeModel::fileColumns()
{
    const QString smart = m_host.writeProject(QStringLiteral("part.kpr"), {koTestHost::geometry("Block")});
    koTestHost::setModified(smart, QDateTime(QDate(2021, 3, 4), QTime(5, 6, 7)));
    QJsonObject clone = koTestHost::reference("Part", "part.kpr", "gone.obj");
    clone.insert(QStringLiteral("instance"), QStringLiteral("p"));
    m_host.writeProject(QStringLiteral("project.kpr"), {clone, clone});
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.path("project.kpr")));

    ReferenceModel model(new koReferenceFlatModelItem(kodNode()));
    QStringList texts;
    for (int column = koReferenceModelItem::InstancesColumn; column < koReferenceModelItem::ColumnCount; ++column)
        texts << model.index(1, column).data().toString();
    // Instances, then status, date, owner and location of the smart file and of the source.
    QCOMPARE(texts, (QStringList{"2", upToDate("Up to date"), "2021.03.04 05:06", QFileInfo(smart).owner(),
                                 QDir::toNativeSeparators(smart), colored(koStyle::getReferenceMissingColor(), "Missing"),
                                 "----", QString(), QDir::toNativeSeparators(m_host.path("gone.obj"))}));
}

QTEST_MAIN(tst_koReferenceTreeModel)
#include "tst_koreferencetreemodel.moc"
