#include <kovis/koBaseService.h>

koBaseService::koBaseService(QObject* parent)
    : QObject(parent)
{
}

koBaseService::~koBaseService() = default;
