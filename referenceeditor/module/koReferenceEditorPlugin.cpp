#include "koReferenceEditorModule.h"

// The host calls this once at start-up; later calls find the window made.
extern "C" Q_DECL_EXPORT void initPlugin()
{
    static koReferenceEditorModule module(nullptr, QString());
}
