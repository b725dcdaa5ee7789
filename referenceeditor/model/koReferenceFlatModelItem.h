#pragma once

#include <kovis/koNodeModelItem.h>

// The invisible top of the reference list: every reference of the scene in one level.
class koReferenceFlatModelItem : public koNodeModelItem
{
public:
    explicit koReferenceFlatModelItem(const kodNode& node);

    QVariant getId() const override;
    QList<koModelItem*> createChildList() override;
};
