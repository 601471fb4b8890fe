#include "app/CycleEvents.h"

CycleEvents *CycleEvents::instance()
{
    static CycleEvents *events = new CycleEvents;
    return events;
}
