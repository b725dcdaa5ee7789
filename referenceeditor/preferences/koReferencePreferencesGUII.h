#pragma once

#include "ui_koReferencePreferencesGUI.h"

#include <kovis/koPreferencesCategory.h>

// The "References" page of the host's preferences: how referenced files are watched,
// where new smart references go and how sub-references load. The widgets are the only
// copy of the values between loading and saving.
class koReferencePreferencesGUII : public koPreferencesCategory, public Ui::koReferencePreferencesGUI
{
    Q_OBJECT
public:
    explicit koReferencePreferencesGUII(QWidget* parent = nullptr);

    void initDefaults(bool markChanged) override;
    void applyChanges() override;
    void loadValues() override;
    void saveValues() override;

public slots:
    void updateEnabledStates();
    void selectStoreLocation();

private:
    void setUpStoreLocationButton();
    void fillComboBoxes();
};
