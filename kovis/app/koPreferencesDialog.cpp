#include "koPreferencesDialog.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

koPreferencesDialog::koPreferencesDialog(QWidget* parent)
    : QDialog(parent)
    , m_categories(new QListWidget(this))
    , m_pages(new QStackedWidget(this))
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel
                                         | QDialogButtonBox::RestoreDefaults,
                                     this))
{
    setObjectName(QStringLiteral("PreferencesDialog"));
    setWindowTitle(tr("Preferences"));
    m_categories->setObjectName(QStringLiteral("PreferencesCategories"));
    m_categories->setMaximumWidth(180);
    auto* pages = new QHBoxLayout;
    pages->addWidget(m_categories);
    pages->addWidget(m_pages, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(pages);
    layout->addWidget(m_buttons);

    connect(m_categories, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    connect(m_buttons, &QDialogButtonBox::accepted, this, [this] {
        apply();
        accept();
    });
    connect(m_buttons, &QDialogButtonBox::rejected, this, [this] {
        // Defaults restored on a page are stored but not applied; Cancel takes them back.
        preferences()->restore(m_applied);
        reject();
    });
    connect(m_buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &koPreferencesDialog::apply);
    connect(m_buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            &koPreferencesDialog::restoreDefaults);
    addPages();
    m_applied = preferences()->snapshot();
    resize(sizeHint().expandedTo(QSize(640, 480)));
}

koPreferencesDialog::~koPreferencesDialog()
{
    while (m_pages->count() > 0) {
        QWidget* page = m_pages->widget(0);
        m_pages->removeWidget(page);
        page->hide();
        page->setParent(nullptr);
    }
}

void koPreferencesDialog::addPages()
{
    for (koPreferencesCategory* category : koPreferencesCategory::registeredCategories()) {
        category->loadValues();
        m_categories->addItem(category->getName());
        m_pages->addWidget(category);
    }
    m_categories->setCurrentRow(0);
}

koPreferencesCategory* koPreferencesDialog::currentCategory() const
{
    return qobject_cast<koPreferencesCategory*>(m_pages->currentWidget());
}

koPreferencesService* koPreferencesDialog::preferences()
{
    return koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>();
}

void koPreferencesDialog::apply()
{
    for (int page = 0; page < m_pages->count(); ++page) {
        auto* category = qobject_cast<koPreferencesCategory*>(m_pages->widget(page));
        category->saveValues();
        // The category acts on its changed values when it hears that it was applied.
        preferences()->notifyCategoryApplied(category->getName());
    }
    preferences()->sync();
    m_applied = preferences()->snapshot();
}

void koPreferencesDialog::restoreDefaults()
{
    // The page shows its defaults; they take effect with OK or Apply.
    if (koPreferencesCategory* category = currentCategory()) {
        category->initDefaults(true);
        category->loadValues();
    }
}
