#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <cstdint>
#include <memory>

// The logical sectors (2048 bytes of user data each) of a disc image file: a plain image (.iso, a DVD or
// Blu-ray image), or a raw CD image (.bin with its .cue, 2352 bytes a sector, mode 1 or mode 2 form 1).
class SectorSource
{
public:
    static constexpr int64_t SectorSize = 2048;
    virtual ~SectorSource() = default;
    // Sectors the image holds.
    virtual int64_t Sectors() const = 0;
    // Reads n bytes of user data from byte offset `at` of sector `sector` on, across sectors; false when
    // any of them lies past the end of the image or cannot be read.
    virtual bool Read(int64_t sector, int64_t at, char *out, int64_t n) = 0;
    // Where the last session's data begins (its volume descriptors lie 16 sectors further).
    int64_t sessionStart = 0;
};

// A disc image as a drive would show it, read without mounting it and without copying it out: its
// folders in the order of their directory records, its files by their extents. Every read stays inside
// the image; a damaged or hostile part gives a problem text and the rest goes on.
class DiscImage
{
public:
    virtual ~DiscImage() = default;

    // The image of that file, or null when the file is no image (why says so) or cannot be read.
    static std::shared_ptr<DiscImage> Open(const QString &path, QString *why = nullptr);
    // The kind of image and the names it is read with ("ISO 9660 with Rock Ridge", "UDF 2.50", ...).
    QString Format() const { return m_format; }
    QString Path() const { return m_path; }

    // A folder's entries, as names (bytes, UTF-8 where the image's names can say it) in record order.
    // Links, devices, pipes and sockets are not among them.
    struct Entry {
        QByteArray name;
        int32_t node = -1;
        bool folder = false;
        bool hidden = false;
        int64_t size = 0;
    };
    struct Listing {
        QList<Entry> entries;
        QString problem; // why not everything of the folder could be listed, or ""
    };
    int32_t Root() const { return m_root; }
    // The same folder lists the same each time it is asked for. A folder entry that leads to a folder
    // already handed out (its own parent, a loop, or one folder under two names) is left out with a
    // problem: a hostile image never makes a walk go round or grow without end.
    Listing List(int32_t folder);

    int64_t Size(int32_t node) const;
    // Reads up to n bytes of a file from offset on; returns the number read, or -1 when the image cannot
    // give them (damaged, past its end).
    int64_t Read(int32_t node, int64_t offset, char *out, int64_t n);

protected:
    // A run of bytes of a file: at a sector of the image, or (sector < 0) nothing recorded, read as zeros.
    struct Extent {
        int64_t sector;
        int64_t bytes;
    };
    struct Node {
        QList<Extent> extents;
        QList<int64_t> starts; // where each extent begins in the file (made by addNode)
        QByteArray inlineData; // a small file kept in its own entry
        bool isInline = false;
        int64_t size = 0;
        bool folder = false;
        int64_t location = -1; // what identifies a folder: a folder listed once per walk
    };
    // The reader's own listing of a folder from its records' bytes (as far as they could be read).
    virtual Listing list(int32_t folder, const QByteArray &records) = 0;
    int32_t addNode(Node node);
    // The bytes of a folder (or of any node), at most `limit`.
    bool readAll(int32_t node, QByteArray &out, int64_t limit, QString &problem);

    std::unique_ptr<SectorSource> m_source;
    QList<Node> m_nodes;
    int32_t m_root = -1;
    QString m_format;
    QString m_path;
    QSet<int64_t> m_folders;          // where the folders handed out lie
    QMap<int64_t, int64_t> m_folderRanges; // the sectors of the folders listed: first to past the last
    QHash<int32_t, Listing> m_listings; // each folder's listing, made once

    friend std::shared_ptr<DiscImage> OpenIsoImage(std::unique_ptr<SectorSource> &source, QString &why);
    friend std::shared_ptr<DiscImage> OpenUdfImage(std::unique_ptr<SectorSource> &source, QString &why);
};

// The readers of the two file systems (each in its own file); they take the source when they succeed.
std::shared_ptr<DiscImage> OpenIsoImage(std::unique_ptr<SectorSource> &source, QString &why);
std::shared_ptr<DiscImage> OpenUdfImage(std::unique_ptr<SectorSource> &source, QString &why);

// Whether a file is a disc image by its content (and a cue sheet by its text): the cheap test a drive
// list or a setting needs before it takes a file as a volume.
bool IsDiscImage(const QString &path);
