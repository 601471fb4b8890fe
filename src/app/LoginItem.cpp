#include "services/LoginItem.h"

namespace {
LoginItem *&slot()
{
    static LoginItem *item = nullptr;
    return item;
}
} // namespace

LoginItem *LoginItems::current()
{
    return slot();
}

void LoginItems::setCurrent(LoginItem *item)
{
    slot() = item;
}
