#pragma once

#include <kovis/koNodeModelItem.h>

// The invisible top of the reference graph: its one row is the scene's root
// reference, below which references nest as they do in the scene.
class koReferenceTreeRootItem : public koNodeModelItem
{
public:
    explicit koReferenceTreeRootItem(const kodNode& node);

    QVariant getId() const override;
    QList<koModelItem*> createChildList() override;
};
