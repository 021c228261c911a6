#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>

// What a file's first bytes say it is, whatever its name: a Windows program or library (PE, 32 or 64
// bit), an ELF program or library, a Mach-O one (thin, or universal with several inside). Only headers
// are read, and a header that is cut short or does not hold together is no program: a text that begins
// with "MZ" is text, and a Java class file (whose mark is the universal Mach-O's) is no Mach-O.
struct ExecutableFormat {
    QString format; // "pe", "elf" or "mach-o"; empty when the file is no program
    QString bits;   // "32" or "64" (a universal Mach-O: empty)
    QString role;   // "program", "library" or "other" (an object file, a core dump, a bundle)
    bool found() const { return !format.isEmpty(); }
};

// Reads n bytes from an offset of the file; returns what it could read.
using HeaderReader = std::function<QByteArray(int64_t offset, int n)>;

// The file's format from its head (the first bytes, at least 64 when the file has them) and, for a PE,
// the header the head points to.
ExecutableFormat ExecutableFormatOf(const QByteArray &head, int64_t size, const HeaderReader &read);

// The files of the scan whose content is a program, in the walk's order, each with its format; a
// Windows one with its version information when it has some.
struct ProgramFile {
    QString stored;
    int occurrence = 0;
    ExecutableFormat format;
    bool hasVersion = false;
    QString languageCodePage;
    QString companyName, fileDescription, fileVersion, internalName, legalCopyright, originalFileName,
        productName, productVersion;
};
struct ListedFile;
// The two steps: the files whose first bytes carry a program's mark (only reads the files; it may run
// beside other work, and stops early when `stop` is set), then each of those examined (versions read; not beside other work).
QList<qsizetype> FilesMarkedAsPrograms(int threads = 2, const std::atomic<bool> *stop = nullptr);
QList<ProgramFile> ExaminePrograms(const QList<ListedFile> &files, const QList<qsizetype> &marked);
