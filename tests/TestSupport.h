#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

// A temporary application folder for one test program: extract/, reports/ and documentation/ as the
// installation lays them out, the build's pictures linked in, and KEVRO_HOME pointing at it.
class TempAppFolder final
{
public:
    TempAppFolder();
    ~TempAppFolder();
    QString path() const { return m_dir.path(); }
    QString file(const QString &relative) const { return m_dir.filePath(relative); }

private:
    QTemporaryDir m_dir;
    QByteArray m_previousHome;
};

// Writes a file, creating its folders; returns its path.
QString WriteTestFile(const QString &path, const QByteArray &contents);
QByteArray ReadTestFile(const QString &path);

// A message box shown while no responder is installed fails the test, and is answered with its first
// button: no box ever waits for a click. Every test program starts so; a program that puts the
// screens' dialogs in place (InstallScreenServices) calls this again afterwards.
void RefuseBoxesWithoutResponder();
