#include "UpdateWindow.h"

// The window module's one entry point, looked up by name once it is loaded.
// The module resolves the core's symbols against the program (which exports
// them), so the window speaks the program's loaded translation.
extern "C" Q_DECL_EXPORT UpdatePresenter *narv_update_window()
{
    return UpdateWindow::ensure();
}
