#pragma once

#include <kovis/koNodeModelItem.h>
#include <kovis/kodReferenceNode.h>

#include <array>
#include <bitset>

class koTextMatcher;

// One reference row. Column 0 is the node (the model adds the file labels); the smart
// link's status, date, owner and location follow, then the same for the source link.
// In the graph an item's children are the nearest references below its node.
class koReferenceModelItem final : public koNodeModelItem
{
public:
    enum Column {
        NameColumn = 0,
        InstancesColumn = 1,
        SmartStatusColumn = 2,
        SmartModifiedColumn = 3,
        SmartOwnerColumn = 4,
        SmartLocationColumn = 5,
        SourceStatusColumn = 6,
        SourceModifiedColumn = 7,
        SourceOwnerColumn = 8,
        SourceLocationColumn = 9,
        ColumnCount = 10
    };

    // The columns a search looks in: the name and both locations.
    static constexpr std::array<int, 3> searchColumns{NameColumn, SmartLocationColumn, SourceLocationColumn};

    koReferenceModelItem(const kodNode& node, bool nested, koModelItem* parent);

    QVariant data(int column, int role) const override;
    void reload() override;
    // References are not moved by dragging their rows; views ask for every row.
    bool getDragEnabled() const override { return false; }
    bool getDropEnabled() const override { return false; }
    QList<koModelItem*> createChildList() override;

    // What the reference model shows in the column: in column 0 the reference's name
    // with its file labels. Once made, a text can be read from any thread until the
    // next reload.
    const QString& text(int column) const;
    // Makes the texts of the search columns, so that other threads can read them.
    void makeSearchTexts() const;

    // Whether the search finds its expression in the name or either location.
    bool matches(const koTextMatcher& search) const;

    // The nearest reference nodes below the node, in scene order.
    static QList<kodNode> referencesBelow(const kodNode& node);

private:
    QString columnText(int column, const kodReferenceNode& reference) const;
    // Null for the columns that hold plain text.
    QVariant richText(int column) const;
    // Texts are made once per reload of the item: every search keystroke reads three
    // of them for every row, and the host announces every change with a reload.
    const QString& cachedText(int column) const;

    bool m_nested;
    mutable std::array<QString, ColumnCount> m_texts;
    mutable std::bitset<ColumnCount> m_textKnown;
};
