#pragma once

#include <kovis/koKernelServiceFactory.h>

// A host service, looked up as the plug-in does.
template<class Service>
Service* testService()
{
    return koKernelServiceFactory::the()->getServiceOrNull<Service>();
}
