#include "koPreferencesDialog.h"
#include "koTestHost.h"

#include <kovis/koPreferencesCategory.h>

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPushButton>
#include <QtTest>

Q_DECLARE_METATYPE(QDialogButtonBox::StandardButton)

// A page that records what the dialog asks of it.
class koRecordingCategory : public koPreferencesCategory
{
public:
    explicit koRecordingCategory(const QString& name)
        : koPreferencesCategory(name)
    {
        registerCategory();
    }

    void initDefaults(bool markChanged) override { calls.append(markChanged ? "initDefaults(true)" : "initDefaults(false)"); }
    void applyChanges() override { calls.append("applyChanges"); }
    void loadValues() override { calls.append("loadValues"); }
    void saveValues() override { calls.append("saveValues"); }

    QStringList calls;
};

class tst_koPreferencesDialog : public QObject
{
    Q_OBJECT

private slots:
    void buttonsDriveTheCategories_data();
    void buttonsDriveTheCategories();
    void pagesOutliveTheDialog();

private:
    koTestHost m_host;
};

namespace {

koRecordingCategory& firstCategory()
{
    static koRecordingCategory first(QStringLiteral("First"));
    return first;
}

koRecordingCategory& secondCategory()
{
    static koRecordingCategory second(QStringLiteral("Second"));
    return second;
}

} // namespace

void tst_koPreferencesDialog::buttonsDriveTheCategories_data()
{
    QTest::addColumn<QDialogButtonBox::StandardButton>("button");
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QStringList>("second");

    QTest::newRow("apply") << QDialogButtonBox::Apply << QStringList{"loadValues", "saveValues", "applyChanges"}
                           << QStringList{"loadValues", "saveValues", "applyChanges"};
    QTest::newRow("ok") << QDialogButtonBox::Ok << QStringList{"loadValues", "saveValues", "applyChanges"}
                        << QStringList{"loadValues", "saveValues", "applyChanges"};
    QTest::newRow("cancel") << QDialogButtonBox::Cancel << QStringList{"loadValues"} << QStringList{"loadValues"};
    QTest::newRow("restore defaults of the shown page")
        << QDialogButtonBox::RestoreDefaults << QStringList{"loadValues", "initDefaults(true)", "loadValues", "applyChanges"}
        << QStringList{"loadValues"};
}

void tst_koPreferencesDialog::buttonsDriveTheCategories()
{
    QFETCH(QDialogButtonBox::StandardButton, button);
    QFETCH(QStringList, first);
    QFETCH(QStringList, second);

    firstCategory().calls.clear();
    secondCategory().calls.clear();
    {
        koPreferencesDialog dialog;
        const auto* list = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->item(0)->text(), QStringLiteral("First"));
        dialog.findChild<QDialogButtonBox*>()->button(button)->click();
    }
    QCOMPARE(firstCategory().calls, first);
    QCOMPARE(secondCategory().calls, second);
}

void tst_koPreferencesDialog::pagesOutliveTheDialog()
{
    {
        koPreferencesDialog dialog;
        QCOMPARE(firstCategory().parentWidget() != nullptr, true);
    }
    QCOMPARE(firstCategory().parentWidget(), nullptr);
    QCOMPARE(koPreferencesCategory::registeredCategories().size(), 2);
}

QTEST_MAIN(tst_koPreferencesDialog)
#include "tst_kopreferencesdialog.moc"
