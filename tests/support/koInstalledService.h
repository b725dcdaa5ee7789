#pragma once

#include <kovis/koKernelServiceFactory.h>

// Stands in for a service of the registry while it lives, then brings back the one before.
template<class Service>
class koInstalledService
{
public:
    explicit koInstalledService(Service* service)
        : m_previous(koKernelServiceFactory::the()->registerService<Service>(service))
    {
    }
    ~koInstalledService()
    {
        koKernelServiceFactory::the()->registerService<Service>(static_cast<Service*>(m_previous));
    }

    koInstalledService(const koInstalledService&) = delete;
    koInstalledService& operator=(const koInstalledService&) = delete;

private:
    koBaseService* m_previous;
};
