#pragma once

#include <QtGlobal>

#if defined(KOVIS_LIBRARY)
#  define KOVIS_EXPORT Q_DECL_EXPORT
#else
#  define KOVIS_EXPORT Q_DECL_IMPORT
#endif
