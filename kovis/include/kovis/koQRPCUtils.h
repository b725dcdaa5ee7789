#pragma once

#include "koGlobal.h"

#include <functional>

// Calls across threads for the host and its plug-ins, which otherwise run on the GUI
// thread only.
class KOVIS_EXPORT koQRPCUtils
{
public:
    static koQRPCUtils* the();

    // Runs the call on a worker thread and returns once it has returned. The GUI
    // thread's events are handled meanwhile, so the window paints and a dialog can ask
    // the call to stop. The call must not touch the scene or widgets.
    void callOffGuiThread(const std::function<void()>& call);

private:
    koQRPCUtils() = default;
};
