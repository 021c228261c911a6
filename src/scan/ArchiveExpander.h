#pragma once

#include "platform/VbError.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

// Reads and expands the archives a disc carries: ZIP files and self-extracting EXEs (and the other
// self-extractors libarchive reads). Untrusted content never lands outside the target folder: no "..",
// no absolute names, no links, no device files; sizes are bounded by what is written, never by what a
// header declares.
class ArchiveExpander final
{
public:
    // Bounds of an expansion. A member's declared size and its written bytes both count against them.
    struct Limits {
        int64_t archiveBytes;       // all members of one archive
        int64_t scanBytes;          // all archives of one scan (nested ones included)
        int64_t ratioFloorBytes;    // a member is judged by its ratio only once it has written this much
        int64_t maxRatio;           // written bytes per compressed byte read for one member
        int64_t freeSpaceReserve;   // never leave less than this free on the extract folder's file system
        int64_t archiveMembers;     // members of one archive (each one read costs time, each file an inode)
        int64_t scanMembers;        // members of all archives of one scan
    };
    static Limits DefaultLimits();

    // What the screen shows and how it interrupts. Every member is optional.
    struct Observer {
        std::function<void(int percent)> progress; // share of the archive's bytes read
        std::function<void()> pumpEvents;          // lets a click on Cancel arrive
    };

    // An archive's bytes wherever they lie (a file of a folder, a file inside a disc image): its size,
    // and how n bytes from an offset are read (the number read, -1 when they cannot be).
    struct Source {
        int64_t size = 0;
        std::function<int64_t(int64_t offset, char *out, int64_t n)> read;
    };

    ArchiveExpander();
    explicit ArchiveExpander(Limits limits);

    void setObserver(Observer observer) { m_observer = std::move(observer); }
    const Limits &limits() const { return m_limits; }

    // The archive's result code for reading its contents list: 0 when the file is a readable archive,
    // non-zero (and no message) when it is no archive at all. A file that is an archive but cannot be
    // listed (damaged, truncated, headers encrypted) raises VbError with ErrDamagedArchive; a file that
    // cannot be opened raises the runtime's file errors (53, 70, 57).
    static constexpr long ErrDamagedArchive = VbErr::InvalidFileFormat;
    long ReadContents(const QString &archivePath);
    long ReadContents(const QByteArray &nativeArchivePath);
    long ReadContents(const Source &source);

    // Expands every member into targetFolder (created as needed), keeping the member's folders and
    // overwriting what is there. Members that cannot or must not be written are skipped and named in the
    // warnings; a bound that is passed stops the archive with a warning, and what was written so far
    // stays. A partial file (abort, damaged member, bound) is removed. Returns false when the expansion
    // was aborted or stopped by a bound.
    bool Expand(const QString &archivePath, const QString &targetFolder);
    bool Expand(const QByteArray &nativeArchivePath, const QByteArray &nativeTargetFolder);
    bool Expand(const Source &source, const QByteArray &nativeTargetFolder);

    // Set by Cancel: stops the running expansion at the next block.
    void setAbort(bool abort) { m_abort = abort; }
    bool abort() const { return m_abort; }

    // What the last Expand had to say to the operator, one line a skipped member or a bound passed; past
    // MaxWarnings lines only their number is kept.
    static constexpr int MaxWarnings = 1000;
    const QStringList &warnings() const { return m_warnings; }
    int warningsLeftOut() const { return m_warningsLeftOut; }

    // The bytes written and the members read by this expander since it was made (or since
    // ResetScanTotal).
    int64_t scanTotal() const { return m_scanTotal; }
    void ResetScanTotal()
    {
        m_scanTotal = 0;
        m_scanMembers = 0;
    }

    // Member names without a UTF-8 mark are read as the DOS code page 437, as old ZIP tools wrote them.
    static QString DecodeMemberName(const char *raw);
    // Sets LC_CTYPE to a UTF-8 locale, which libarchive needs for non-ASCII member names. Once, at start.
    static void PrepareLocale();

private:
    Limits m_limits;
    Observer m_observer;
    bool m_abort = false;
    QStringList m_warnings;
    int m_warningsLeftOut = 0;
    int64_t m_scanTotal = 0;
    int64_t m_scanMembers = 0;

    void warn(const QString &line);

    struct Run;
    friend struct Run;
};
