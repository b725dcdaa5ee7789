#pragma once

#include "koGlobal.h"

#include <QFont>
#include <QHash>
#include <QIcon>
#include <QList>
#include <QVariant>
#include <QVector>

class koItemModel;

// One row of a koItemModel; it owns its children. Values set per column are stored;
// items that show live data compute it in data() instead, so that building a large
// tree costs no text work.
class KOVIS_EXPORT koModelItem
{
public:
    // parent: the item this one is built for. It becomes a child only through the
    // parent's setChildren().
    explicit koModelItem(koModelItem* parent = nullptr);
    virtual ~koModelItem();

    koModelItem(const koModelItem&) = delete;
    koModelItem& operator=(const koModelItem&) = delete;

    koModelItem* parent() const { return m_parent; }
    koModelItem* child(int row) const { return m_children.value(row); }
    int childCount() const { return m_children.size(); }
    int row() const { return m_row; }

    // Takes ownership of the children and deletes the previous ones that are not
    // among them.
    void setChildren(const QList<koModelItem*>& children);

    void setText(int column, const QString& text);
    QString getText(int column) const;
    void setFont(int column, const QFont& font);
    QFont getFont(int column) const;
    void setIcon(int column, const QIcon& icon);
    void setCheckState(int column, Qt::CheckState state);
    void setToolTip(int column, const QString& toolTip);
    void setData(int column, int role, const QVariant& value);
    // Columns 0 to 63 can be made editable.
    void setEditable(int column, bool editable);
    bool getEditable(int column) const;

    virtual QVariant data(int column, int role) const;
    // The identity of the row across reloads; an invalid id is not looked up.
    virtual QVariant getId() const;
    // The object id of the scene object that is the row's id, 0 when the id is no
    // scene object: the model indexes many rows without making an id for each.
    virtual quint64 getIdObjectId() const;
    // Brings the item and what it shows below it in step with its data.
    virtual void reload();
    virtual bool getSelectable() const;
    virtual bool getEnabled() const;
    virtual bool getDragEnabled() const;
    virtual bool getDropEnabled() const;
    virtual bool getCheckable(int column) const;
    // A value edited in a view; returns whether the item took it.
    virtual bool setEditData(int column, int role, const QVariant& value);

    Qt::ItemFlags flags(int column) const;

protected:
    // True while a model showing this item reports its changes row by row
    // (between koItemModel::beginEdit() and endEdit()).
    bool isEditing() const;

private:
    friend class koItemModel;

    void adoptChildren(const QList<koModelItem*>& children);
    void renumberChildren(int from);

    koModelItem* m_parent;
    QVector<koModelItem*> m_children;
    int m_row = -1;
    QVector<QHash<int, QVariant>> m_values;
    static constexpr int maxEditableColumns = 64;

    // A bit per column: a set would allocate for every row of a large tree.
    quint64 m_editableColumns = 0;
};
