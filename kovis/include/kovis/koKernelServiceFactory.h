#pragma once

#include "koBaseService.h"

#include <QHash>

#include <typeinfo>

// The process-wide registry of kernel services, keyed by the type of the service class.
class KOVIS_EXPORT koKernelServiceFactory
{
public:
    static koKernelServiceFactory* the();

    // Registers the service under T and returns the service it replaces (or null).
    // The registry does not own the services.
    template<class T>
    koBaseService* registerService(T* service)
    {
        return registerEntry(typeid(T).hash_code(), service);
    }

    template<class T>
    void unregisterService()
    {
        unregisterEntry(typeid(T).hash_code());
    }

    template<class T>
    T* getServiceOrNull() const
    {
        const auto entry = m_services.constFind(typeid(T).hash_code());
        if (entry == m_services.constEnd()) {
            reportMissingClass(T::staticMetaObject.className());
            return nullptr;
        }
        if (!entry.value()) {
            reportNullService(T::staticMetaObject.className());
            return nullptr;
        }
        return static_cast<T*>(entry.value());
    }

private:
    koKernelServiceFactory() = default;
    koBaseService* registerEntry(size_t typeHash, koBaseService* service);
    void unregisterEntry(size_t typeHash);
    static void reportMissingClass(const char* className);
    static void reportNullService(const char* className);

    QHash<size_t, koBaseService*> m_services;
};

template<class T>
T* koService()
{
    return koKernelServiceFactory::the()->getServiceOrNull<T>();
}
