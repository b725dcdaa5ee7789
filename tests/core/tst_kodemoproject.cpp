#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koReferenceService.h>

#include <QtTest>

#include <algorithm>
#include <functional>

using ReferencePredicate = std::function<bool(const kodReferenceNode&)>;
Q_DECLARE_METATYPE(ReferencePredicate)

// The demo project is what a new user sees first; it must show every state a
// reference can be in.
class tst_koDemoProject : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void showsEveryKindOfReference_data();
    void showsEveryKindOfReference();

private:
    koTestHost m_host;
    QList<kodReferenceNode> m_references;
};

namespace {

int depthBelowRoot(const kodReferenceNode& reference)
{
    int depth = 0;
    for (kodNode node = reference.getParent(); node.isValid(); node = node.getParent())
        depth += node.isTypeOf(kodReferenceNode::staticMetaObject) ? 1 : 0;
    return depth;
}

} // namespace

void tst_koDemoProject::initTestCase()
{
    auto* fileIO = koService<koFileIOService>();
    QVERIFY(fileIO->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    m_references = koService<koReferenceService>()->getSceneReferences();
    m_references.removeFirst();
}

void tst_koDemoProject::showsEveryKindOfReference_data()
{
    QTest::addColumn<ReferencePredicate>("predicate");
    QTest::addColumn<int>("atLeast");

    QTest::newRow("references") << ReferencePredicate([](auto&) { return true; }) << 12;
    QTest::newRow("three levels of sub-references") << ReferencePredicate([](auto& r) { return depthBelowRoot(r) >= 3; }) << 1;
    QTest::newRow("missing smart file")
        << ReferencePredicate([](auto& r) { return r.getSmartFileState() == koReferenceTypes::Missing; }) << 1;
    QTest::newRow("out-of-date source")
        << ReferencePredicate([](auto& r) { return r.getSourceFileState() == koReferenceTypes::OutOfDate; }) << 1;
    QTest::newRow("source-only OBJ") << ReferencePredicate([](auto& r) {
        return !r.hasSmartReference() && r.getSourcePath().endsWith(".obj") && r.getChildCount() > 0;
    }) << 1;
    QTest::newRow("binary geometry smart file")
        << ReferencePredicate([](auto& r) { return r.getSmartPath().endsWith(".osb") && r.getChildCount() > 0; }) << 1;
    QTest::newRow("both links up to date") << ReferencePredicate([](auto& r) {
        return r.getSmartFileState() == koReferenceTypes::UpToDate && r.getSourceFileState() == koReferenceTypes::UpToDate;
    }) << 1;
    QTest::newRow("clone") << ReferencePredicate([](auto& r) { return r.isShared(); }) << 2;
    QTest::newRow("locked") << ReferencePredicate([](auto& r) { return r.isLocked(); }) << 1;
    QTest::newRow("hidden") << ReferencePredicate([](auto& r) { return !r.isVisible(); }) << 1;
    QTest::newRow("unloaded") << ReferencePredicate([](auto& r) { return !r.isLoaded(); }) << 1;
}

void tst_koDemoProject::showsEveryKindOfReference()
{
    QFETCH(ReferencePredicate, predicate);
    QFETCH(int, atLeast);

    QVERIFY(std::count_if(m_references.cbegin(), m_references.cend(), predicate) >= atLeast);
}

QTEST_MAIN(tst_koDemoProject)
#include "tst_kodemoproject.moc"
