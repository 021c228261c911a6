// libFuzzer target for the version reader: any bytes as an executable, then the queries the viewer
// makes of whatever block comes out.

#include "platform/PeVersion.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray block = VersionBlockFromImage(reinterpret_cast<const char *>(data), qsizetype(size));
    // A block found in the input, and the input itself taken as a block.
    for (const QByteArray &b : {block, QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size))}) {
        for (const char *path : {"\\VarFileInfo\\Translation", "\\StringFileInfo\\040904B0\\CompanyName",
                                 "\\StringFileInfo\\040904b0\\ProductVersion", "\\", "\\StringFileInfo"}) {
            if (const auto value = QueryVersionValue(b, QLatin1String(path)))
                (void)VersionValueText(*value);
        }
    }
    return 0;
}
