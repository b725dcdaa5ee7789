#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>

#include <QtTest>

#include <memory>

namespace {

// Records what the host asks of it; on apply it notes which of its keys had changed,
// as a real page does before handing values on.
class RecordingCategory : public koPreferencesCategory
{
public:
    RecordingCategory(const QString& name, const QStringList& keys)
        : koPreferencesCategory(name)
        , m_keys(keys)
    {
    }

    void loadValues() override { ++loads; }
    void applyChanges() override
    {
        for (const QString& key : m_keys) {
            if (isChanged(key))
                appliedKeys << key;
        }
    }

    int loads = 0;
    QStringList appliedKeys;

private:
    QStringList m_keys;
};

QString uniqueKey(const QString& name)
{
    return QStringLiteral("%1/%2/%3").arg(QTest::currentTestFunction(), QTest::currentDataTag(), name);
}

} // namespace

class tst_kopreferencescategory : public QObject
{
    Q_OBJECT

private slots:
    void notificationsReachOnlyTheirCategory();
    void registryListsEachCategoryOnce();
};

void tst_kopreferencescategory::notificationsReachOnlyTheirCategory()
{
    koTestHost host;
    const QString ownKey = uniqueKey(QStringLiteral("own"));
    const QString serviceKey = uniqueKey(QStringLiteral("written by the service"));
    const QString otherKey = uniqueKey(QStringLiteral("other"));
    RecordingCategory references(QStringLiteral("References"), {ownKey, serviceKey});
    RecordingCategory other(QStringLiteral("Other"), {otherKey});
    references.registerCategory();
    other.registerCategory();

    references.setIntValue(ownKey, 7, true);
    koService<koPreferencesService>()->setIntValue(serviceKey, 3, true);
    other.setIntValue(otherKey, 1, true);

    koService<koPreferencesService>()->notifyCategoryChanged(QStringLiteral("References"));
    QCOMPARE(references.loads, 1);
    QCOMPARE(other.loads, 0);

    koService<koPreferencesService>()->notifyCategoryApplied(QStringLiteral("References"));
    QCOMPARE(references.appliedKeys, (QStringList{ownKey, serviceKey}));
    QCOMPARE(other.appliedKeys, QStringList());
    QVERIFY(!references.isChanged(ownKey));
    QVERIFY(!references.isChanged(serviceKey));
    QVERIFY(other.isChanged(otherKey));

    koService<koPreferencesService>()->notifyCategoryApplied(QStringLiteral("References"));
    QCOMPARE(references.appliedKeys, (QStringList{ownKey, serviceKey}));
}

void tst_kopreferencescategory::registryListsEachCategoryOnce()
{
    koTestHost host;
    const int before = koPreferencesCategory::registeredCategories().size();
    auto category = std::make_unique<RecordingCategory>(QStringLiteral("Listed"), QStringList());
    category->registerCategory();
    category->registerCategory();
    QCOMPARE(koPreferencesCategory::registeredCategories().count(category.get()), 1);
    koService<koPreferencesService>()->notifyCategoryChanged(QStringLiteral("Listed"));
    QCOMPARE(category->loads, 1);

    category.reset();
    QCOMPARE(koPreferencesCategory::registeredCategories().size(), before);
    koService<koPreferencesService>()->notifyCategoryChanged(QStringLiteral("Listed"));
}

QTEST_MAIN(tst_kopreferencescategory)
#include "tst_kopreferencescategory.moc"
