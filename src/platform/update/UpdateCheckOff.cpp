#include "UpdateCheck.h"

// Built instead of the appcast check when NARV_UPDATE_CHECK is OFF: the
// distribution delivers updates.
void UpdateCheck::install(UpdatePresenter *)
{
}

int UpdateCheck::runFetch(int &, char **)
{
    return 1;
}
