#pragma once

#include <kovis/koItemModel.h>
#include <kovis/kodReferenceNode.h>

#include <functional>

class koReferenceModelItem;

// The reference view's model: column 0 joins a reference's name with the names and
// states of its two files, and shows locked and hidden references in their colours.
class koReferenceTreeModel : public koItemModel
{
    Q_OBJECT
public:
    explicit koReferenceTreeModel(QObject* parent = nullptr);
    ~koReferenceTreeModel() override;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    // The ten column titles: the reference, its instances, then status, date, owner
    // and location of the smart file and of the source file.
    static QStringList columnTitles();
    // "Engine [kpr | engine_v2.CATProduct]": the name and the coloured file labels.
    static QString displayText(const kodReferenceNode& reference);
    // The same as rich text for painting: the name and file names escaped, so that a
    // node named "Bolt<M8> & Nut" shows as such.
    static QString richText(const kodReferenceNode& reference);
    // The reference row at row of parent, null for any other row. Its texts are the
    // cells' display texts, without a variant or an index for each.
    const koReferenceModelItem* referenceItem(int row, const QModelIndex& parent) const;
    // The item as a reference row; null for any other item.
    static const koReferenceModelItem* referenceItemOf(const koModelItem* item);

private:
    static kodReferenceNode referenceOf(const koModelItem* item);
    static QString labelledName(const kodReferenceNode& reference,
                                const std::function<QString(const QString&)>& escape);
};
