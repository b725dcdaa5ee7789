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
    using Buttons = QList<QDialogButtonBox::StandardButton>;
    QTest::addColumn<Buttons>("buttons");
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QStringList>("second");

    const QStringList applied{"loadValues", "saveValues", "applyChanges"};
    QTest::newRow("apply") << Buttons{QDialogButtonBox::Apply} << applied << applied;
    QTest::newRow("ok") << Buttons{QDialogButtonBox::Ok} << applied << applied;
    QTest::newRow("cancel") << Buttons{QDialogButtonBox::Cancel} << QStringList{"loadValues"} << QStringList{"loadValues"};
    // Defaults fill the shown page; they take effect only with OK or Apply.
    QTest::newRow("restore defaults, then cancel")
        << Buttons{QDialogButtonBox::RestoreDefaults, QDialogButtonBox::Cancel}
        << QStringList{"loadValues", "initDefaults(true)", "loadValues"} << QStringList{"loadValues"};
    QTest::newRow("restore defaults, then OK")
        << Buttons{QDialogButtonBox::RestoreDefaults, QDialogButtonBox::Ok}
        << QStringList{"loadValues", "initDefaults(true)", "loadValues", "saveValues", "applyChanges"} << applied;
}

void tst_koPreferencesDialog::buttonsDriveTheCategories()
{
    QFETCH(QList<QDialogButtonBox::StandardButton>, buttons);
    QFETCH(QStringList, first);
    QFETCH(QStringList, second);

    firstCategory().calls.clear();
    secondCategory().calls.clear();
    {
        koPreferencesDialog dialog;
        const auto* list = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->item(0)->text(), QStringLiteral("First"));
        for (QDialogButtonBox::StandardButton button : buttons)
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
