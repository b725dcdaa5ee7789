#include "koGeneralPreferencesPage.h"

#include "ui_koGeneralPreferencesPage.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>

const QString koGeneralPreferencesPage::colouredStateTextsKey = QStringLiteral("Colored State Texts");

koGeneralPreferencesPage::koGeneralPreferencesPage(QWidget* parent)
    : koPreferencesCategory(tr("General"), parent)
    , m_ui(new Ui::koGeneralPreferencesPage)
{
    m_ui->setupUi(this);
    registerCategory();
}

koGeneralPreferencesPage::~koGeneralPreferencesPage() = default;

void koGeneralPreferencesPage::initDefaults(bool markChanged)
{
    setBoolValue(colouredStateTextsKey, true, markChanged);
}

void koGeneralPreferencesPage::loadValues()
{
    m_ui->m_colouredStateTexts->setChecked(getBoolValue(colouredStateTextsKey, true));
}

void koGeneralPreferencesPage::saveValues()
{
    koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>()->setBoolValue(
        colouredStateTextsKey, m_ui->m_colouredStateTexts->isChecked(), true);
}
