#include "TestSupport.h"

#include "platform/MsgBox.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

TempAppFolder::TempAppFolder() : m_previousHome(qgetenv("KEVRO_HOME"))
{
    QDir root(m_dir.path());
    root.mkpath(QStringLiteral("extract"));
    root.mkpath(QStringLiteral("reports"));
    root.mkpath(QStringLiteral("documentation"));
    const QString build = QStringLiteral(KEVRO_BUILD_APP_DIR);
    for (const char *f : {"reports/backdrop.jpg", "reports/htmlicon.jpg", "documentation/help_index.htm"})
        QFile::copy(build + QLatin1Char('/') + QLatin1String(f), root.filePath(QLatin1String(f)));
    QFile::link(build + QStringLiteral("/pictures"), root.filePath(QStringLiteral("pictures")));
    qputenv("KEVRO_HOME", m_dir.path().toLocal8Bit());
}

TempAppFolder::~TempAppFolder()
{
    // Nothing in the folder may stay read-only, or the temporary folder could not be removed.
    QDir(m_dir.path()).removeRecursively();
    if (m_previousHome.isEmpty())
        qunsetenv("KEVRO_HOME");
    else
        qputenv("KEVRO_HOME", m_previousHome);
}

QString WriteTestFile(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(contents);
    return path;
}

QByteArray ReadTestFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void RefuseBoxesWithoutResponder()
{
    SetMsgBoxPresenter([](const MsgBoxRequest &box) {
        QTest::qFail(qPrintable(QStringLiteral("message box with no responder installed: ") + box.prompt), __FILE__,
                     __LINE__);
        return FirstButtonOf(box.style);
    });
}

namespace {
// A box the test did not expect, or expected without saying how the operator answers it, fails the test.
const bool strictBoxes = [] {
    MsgBoxResponder::SetUnexpectedBoxHandler([](const MsgBoxRequest &box) {
        QTest::qFail(qPrintable(QStringLiteral("message box without a queued answer: ") + box.prompt), __FILE__,
                     __LINE__);
    });
    RefuseBoxesWithoutResponder();
    return true;
}();
} // namespace
