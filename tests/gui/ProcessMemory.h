#pragma once

#include <QByteArray>
#include <QFile>

// What this process has resident, from /proc/self/status.
namespace ProcessMemory {

// Resident memory shared with other processes through shared memory objects
// (RssShmem, KiB): on X11, the windows' backing stores, which the X server reads
// the pixels from (MIT-SHM). -1 when it cannot be read.
inline long sharedKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("RssShmem:"))
            return line.mid(9).trimmed().split(' ').first().toLong();
    }
    return -1;
}

// One window's backing store: width × height × 4 bytes, in KiB.
constexpr long backingStoreKiB(int width, int height)
{
    return long(width) * height * 4 / 1024;
}

} // namespace ProcessMemory
