#pragma once

#include "Appcast.h"

#include <QString>

// What shows the outcome of an update check to the user: the update window
// (UpdateWindow, Qt Quick), which lives in a module of its own and is loaded
// only when there is something to show (see UpdateModule.h).
class UpdatePresenter {
public:
    virtual ~UpdatePresenter() = default;
    virtual void showUpdate(const AppcastItem &item) = 0;
    virtual void showUpToDate() = 0;
    virtual void showFailure(const QString &reason) = 0;
};
