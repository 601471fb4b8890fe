#include "services/LoginItem.h"

namespace {
LoginItem *g_current = nullptr;
} // namespace

LoginItem::LoginItem() : m_previous(g_current)
{
    g_current = this;
}

LoginItem::~LoginItem()
{
    if (g_current == this)
        g_current = m_previous;
}

LoginItem *LoginItem::current()
{
    return g_current;
}
