#pragma once

#include "koGlobal.h"

#include <QObject>

// The base of every kernel service kept in the service registry.
class KOVIS_EXPORT koBaseService : public QObject
{
    Q_OBJECT
public:
    explicit koBaseService(QObject* parent = nullptr);
    ~koBaseService() override;
};
