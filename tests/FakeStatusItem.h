#pragma once

// The status item as what it was told last: its title and tooltip, and how
// often its tooltip changed.

#include "statusbar/StatusBarController.h"

#include <QString>

#include <memory>

class FakeStatusItem : public StatusItemBackend {
public:
    // The status item is built on first use; it will be one of these, and
    // `*made` points at it from then on.
    static void installFactory(FakeStatusItem **made)
    {
        StatusBarController::setBackendFactory([made] {
            auto item = std::make_unique<FakeStatusItem>();
            *made = item.get();
            return item;
        });
    }

    void setTitle(const QString &text) override { title = text; }
    void setToolTip(const QString &text) override
    {
        toolTip = text;
        ++toolTipChanges;
    }
    void setPauseItem(const QString &, const QString &) override {}
    void menuLayoutChanged() override {}
    void menuItemChanged(int) override {}

    QString title;
    QString toolTip;
    int toolTipChanges = 0;
};
