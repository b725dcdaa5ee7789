#include <kovis/koPermissionService.h>

bool koPermissionService::canEdit(const kodNode& node) const
{
    return node.isValid() && !node.isLocked();
}
