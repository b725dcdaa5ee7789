#pragma once

#include "koBaseService.h"
#include "kodNode.h"

class KOVIS_EXPORT koPermissionService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

    // Whether the user may edit the node (rename it, change its children).
    virtual bool canEdit(const kodNode& node) const;
};
