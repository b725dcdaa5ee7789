#include <QtGlobal>

extern "C" Q_DECL_EXPORT int somethingElse()
{
    return 42;
}
