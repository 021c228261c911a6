#include "controls/Menus.h"

#include "controls/Form.h"

#include <QMenuBar>

namespace {
QMenu *menu(Form *form, const char *name, const QString &caption)
{
    QMenu *m = form->menuBar()->addMenu(caption);
    m->setObjectName(QLatin1String(name));
    return m;
}

QAction *item(QMenu *menu, const char *name, const QString &caption)
{
    QAction *a = menu->addAction(caption);
    a->setObjectName(QLatin1String(name));
    return a;
}
} // namespace

StandardMenus BuildStandardMenus(Form *form)
{
    StandardMenus m;
    m.mnuFile = menu(form, "mnuFile", QStringLiteral("&File"));
    m.mnuFileExit = item(m.mnuFile, "mnuFileExit", QStringLiteral("E&xit"));
    m.mnuScanEngine = menu(form, "mnuScanEngine", QStringLiteral("&Scan Engine"));
    m.mnuScanEngineScanDisc = item(m.mnuScanEngine, "mnuScanEngineScanDisc", QStringLiteral("S&can Disc"));
    m.mnuScanEngineReports = item(m.mnuScanEngine, "mnuScanEngineReports", QStringLiteral("&Reports"));
    m.mnuDatabase = menu(form, "mnuDatabase", QStringLiteral("&Database"));
    m.mnuDatabaseLicenseControl = item(m.mnuDatabase, "mnuDatabaseLicenseControl", QStringLiteral("&Licenses"));
    m.mnuDatabaseFileControl = item(m.mnuDatabase, "mnuDatabaseFileControl", QStringLiteral("&Applications"));
    m.mnuDatabaseClients = item(m.mnuDatabase, "mnuDatabaseClients", QStringLiteral("&Clients"));
    m.mnuTools = menu(form, "mnuTools", QStringLiteral("&Tools"));
    m.mnuToolsOptions = item(m.mnuTools, "mnuToolsOptions", QStringLiteral("O&ptions"));
    m.mnuHelp = menu(form, "mnuHelp", QStringLiteral("&Help"));
    m.mnuHelpContents = item(m.mnuHelp, "mnuHelpContents", QStringLiteral("&Contents"));
    m.mnuHelpAbout = item(m.mnuHelp, "mnuHelpAbout", QStringLiteral("&About"));
    return m;
}
