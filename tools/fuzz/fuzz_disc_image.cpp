// libFuzzer target for the disc image readers: any bytes as an image file, opened, every folder listed
// and the head of every file read, as a scan and the viewers would.

#include "platform/DiscImage.h"

#include <QString>

#include <cstddef>
#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace {
void walk(DiscImage &image, int32_t folder, int &budget)
{
    const DiscImage::Listing listing = image.List(folder);
    for (const DiscImage::Entry &e : listing.entries) {
        if (--budget <= 0)
            return;
        if (e.folder) {
            walk(image, e.node, budget);
        } else {
            char head[4096];
            (void)image.Read(e.node, 0, head, sizeof head);
            (void)image.Read(e.node, e.size > 10 ? e.size - 10 : 0, head, 100);
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The readers open a path: the bytes become an anonymous file of this process.
    const int fd = memfd_create("image", 0);
    if (fd < 0)
        return 0;
    if (write(fd, data, size) == ssize_t(size)) {
        if (auto image = DiscImage::Open(QStringLiteral("/proc/self/fd/%1").arg(fd))) {
            int budget = 20000;
            walk(*image, image->Root(), budget);
        }
    }
    close(fd);
    return 0;
}
