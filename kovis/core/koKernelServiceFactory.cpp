#include <kovis/koKernelServiceFactory.h>

#include <cstdio>

koKernelServiceFactory* koKernelServiceFactory::the()
{
    static koKernelServiceFactory factory;
    return &factory;
}

koBaseService* koKernelServiceFactory::registerEntry(size_t typeHash, koBaseService* service)
{
    koBaseService* previous = m_services.value(typeHash);
    m_services.insert(typeHash, service);
    return previous;
}

void koKernelServiceFactory::unregisterEntry(size_t typeHash)
{
    m_services.remove(typeHash);
}

void koKernelServiceFactory::reportMissingClass(const char* className)
{
    std::fprintf(stderr, "koKernelServiceFactory: couldn't find class '%s'!\n", className);
}

void koKernelServiceFactory::reportNullService(const char* className)
{
    std::fprintf(stderr, "koKernelServiceFactory: service '%s' is NULL!\n", className);
}
