#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>

// A disc as a Linux master, a Rock Ridge image or a careless archiver really holds it: links dangling,
// looping, pointing out of the disc, to a file and to a folder; a pipe and a socket; names with CR,
// LF, a tab, "<" and ">", a right-to-left override, bytes that are not UTF-8; names equal but for case;
// and a ZIP holding such names too. Each regular file holds text of its own, so every row that opens
// a file shows which file it reached.
class HostileDisc final
{
public:
    HostileDisc();
    QString root() const { return m_dir.filePath(QStringLiteral("disc")); }
    // A folder beside the disc that its links point into; nothing may be read from it or written to it.
    QString outside() const { return m_dir.filePath(QStringLiteral("outside")); }

    // A regular file of the disc (or a member of its ZIP): its stored path below the disc's root
    // ("/README.TXT"), or below the ZIP's folder in the extract folder ("/DATA.ZIP/SAME.TXT"), and
    // what it holds.
    struct File {
        QString stored;
        QByteArray contents;
        bool member = false;
    };
    const QList<File> &files() const { return m_files; }
    // Everything the disc holds that is no file of it (links, the pipe, the socket), by name.
    static QStringList NotFiles();

private:
    void add(const QByteArray &name, const QString &stored, const QByteArray &contents);
    QTemporaryDir m_dir;
    QList<File> m_files;
};
