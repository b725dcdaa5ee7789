#include <kovis/koItemModel.h>
#include <kovis/koModelItem.h>

koModelItem::koModelItem(koModelItem* parent)
    : m_parent(parent)
{
}

koModelItem::~koModelItem()
{
    qDeleteAll(m_children);
}

void koModelItem::setChildren(const QList<koModelItem*>& children)
{
    QList<koModelItem*> items = children;
    items.removeAll(nullptr);
    if (koItemModel* model = koItemModel::editingModelOf(this))
        model->replaceChildren(this, items);
    else
        adoptChildren(items);
}

void koModelItem::adoptChildren(const QList<koModelItem*>& children)
{
    if (!m_children.isEmpty()) {
        const QSet<koModelItem*> kept(children.cbegin(), children.cend());
        for (koModelItem* old : qAsConst(m_children)) {
            if (!kept.contains(old))
                delete old;
        }
    }
    m_children = children.toVector();
    for (koModelItem* child : qAsConst(m_children))
        child->m_parent = this;
    renumberChildren(0);
}

void koModelItem::renumberChildren(int from)
{
    for (int row = from; row < m_children.size(); ++row)
        m_children.at(row)->m_row = row;
}

void koModelItem::setText(int column, const QString& text)
{
    setData(column, Qt::DisplayRole, text);
}

QString koModelItem::getText(int column) const
{
    return data(column, Qt::DisplayRole).toString();
}

void koModelItem::setFont(int column, const QFont& font)
{
    setData(column, Qt::FontRole, font);
}

QFont koModelItem::getFont(int column) const
{
    return qvariant_cast<QFont>(data(column, Qt::FontRole));
}

void koModelItem::setIcon(int column, const QIcon& icon)
{
    setData(column, Qt::DecorationRole, icon);
}

void koModelItem::setCheckState(int column, Qt::CheckState state)
{
    setData(column, Qt::CheckStateRole, int(state));
}

void koModelItem::setToolTip(int column, const QString& toolTip)
{
    setData(column, Qt::ToolTipRole, toolTip);
}

void koModelItem::setData(int column, int role, const QVariant& value)
{
    if (column < 0)
        return;
    if (column >= m_values.size())
        m_values.resize(column + 1);
    m_values[column].insert(role, value);
}

void koModelItem::setEditable(int column, bool editable)
{
    if (column < 0 || column >= maxEditableColumns) {
        qWarning("koModelItem: column %d cannot be made editable", column);
        return;
    }
    const quint64 bit = quint64(1) << column;
    m_editableColumns = editable ? (m_editableColumns | bit) : (m_editableColumns & ~bit);
}

bool koModelItem::getEditable(int column) const
{
    return column >= 0 && column < maxEditableColumns && (m_editableColumns >> column) & 1;
}

QVariant koModelItem::data(int column, int role) const
{
    if (column < 0 || column >= m_values.size())
        return QVariant();
    const QHash<int, QVariant>& values = m_values.at(column);
    const auto value = values.constFind(role);
    if (value != values.constEnd())
        return value.value();
    return role == Qt::EditRole ? values.value(Qt::DisplayRole) : QVariant();
}

quint64 koModelItem::getIdObjectId() const
{
    return 0;
}

QVariant koModelItem::getId() const
{
    return QVariant();
}

void koModelItem::reload()
{
    koItemModel::reportReloaded(this);
    for (koModelItem* child : qAsConst(m_children))
        child->reload();
}

bool koModelItem::getSelectable() const
{
    return true;
}

bool koModelItem::getEnabled() const
{
    return true;
}

bool koModelItem::getDragEnabled() const
{
    return false;
}

bool koModelItem::getDropEnabled() const
{
    return false;
}

bool koModelItem::getCheckable(int column) const
{
    return data(column, Qt::CheckStateRole).isValid();
}

bool koModelItem::setEditData(int column, int role, const QVariant& value)
{
    if (role == Qt::EditRole && getEditable(column)) {
        setText(column, value.toString());
        return true;
    }
    if (role == Qt::CheckStateRole && getCheckable(column)) {
        setCheckState(column, Qt::CheckState(value.toInt()));
        return true;
    }
    return false;
}

Qt::ItemFlags koModelItem::flags(int column) const
{
    Qt::ItemFlags result;
    result.setFlag(Qt::ItemIsEnabled, getEnabled());
    result.setFlag(Qt::ItemIsSelectable, getSelectable());
    result.setFlag(Qt::ItemIsEditable, getEditable(column));
    result.setFlag(Qt::ItemIsUserCheckable, getCheckable(column));
    result.setFlag(Qt::ItemIsDragEnabled, getDragEnabled());
    result.setFlag(Qt::ItemIsDropEnabled, getDropEnabled());
    return result;
}

bool koModelItem::isEditing() const
{
    return koItemModel::editingModelOf(this) != nullptr;
}
