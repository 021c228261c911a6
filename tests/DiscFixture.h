#pragma once

#include "TestSupport.h"

#include "shell/MainMod.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

// A disc of the test's own: files written under a temporary folder, stored upper case as a scan
// stores them.
class Disc final
{
public:
    QString add(const QString &relative, qsizetype bytes = 1500)
    {
        const QString real = WriteTestFile(m_dir.filePath(relative), QByteArray(bytes, 'x'));
        const QString stored = real.toUpper();
        AppendToList(m_files, stored);
        return stored;
    }
    // A copy of a real file.
    QString addCopy(const QString &relative, const QString &source)
    {
        const QString real = m_dir.filePath(relative);
        QDir().mkpath(QFileInfo(real).path());
        if (!QFile::copy(source, real))
            return QString();
        AppendToList(m_files, real.toUpper());
        return real.toUpper();
    }
    // A member of an archive, laid out in the extract folder as the expansion leaves it.
    QString addMember(const QString &relative, qsizetype bytes = 3000)
    {
        const QString real = WriteTestFile(ExtractFolder() + QLatin1Char('/') + relative, QByteArray(bytes, 'm'));
        const QString stored = real.toUpper();
        AppendToList(m_files, stored);
        return stored;
    }
    QStringList files() const { return m_files; }
    QString root() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    QStringList m_files{QString()};
};
