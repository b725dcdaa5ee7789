#include "koReferenceEditorModule.h"
#include "koReferencePreferencesGUII.h"

// The host calls this once at start-up; later calls find the window made.
extern "C" Q_DECL_EXPORT void initPlugin()
{
    static koReferenceEditorModule module(nullptr, QString());
}

// The page registers itself with the host's preferences when it is made.
extern "C" Q_DECL_EXPORT void initPreferencesPlugin()
{
    static koReferencePreferencesGUII page;
}
