#pragma once

#include "ui_koReferenceSmartLocationDialog.h"

#include <QDialog>

// Asks where the files of new smart references go: next to their source files or into
// one folder that can be written. The caller reads the answer after exec().
class koReferenceSmartLocationDialogUI : public QDialog, public Ui::koReferenceSmartLocationDialog
{
    Q_OBJECT
public:
    explicit koReferenceSmartLocationDialogUI(QWidget* parent);

    // Without a source file for every reference, only a folder of their own will do.
    void setAllHaveSource(bool allHaveSource);
    QString customFolder() const;
    // A koReferenceTypes::ExportLocation.
    int locationIndex() const;

private:
    void setUpChooseFolderButton();
    void enableCustomFolder(int locationIndex);
    void chooseFolder();
};
