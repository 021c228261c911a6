#pragma once

class Form;
class QAction;
class QMenu;

// The menu bar every working screen carries: File, Scan Engine, Database, Tools, Help. Which entries
// act differs from screen to screen; each screen connects its own.
struct StandardMenus {
    QMenu *mnuFile = nullptr;
    QAction *mnuFileExit = nullptr;
    QMenu *mnuScanEngine = nullptr;
    QAction *mnuScanEngineScanDisc = nullptr;
    QAction *mnuScanEngineReports = nullptr;
    QMenu *mnuDatabase = nullptr;
    QAction *mnuDatabaseLicenseControl = nullptr;
    QAction *mnuDatabaseFileControl = nullptr;
    QAction *mnuDatabaseClients = nullptr;
    QMenu *mnuTools = nullptr;
    QAction *mnuToolsOptions = nullptr;
    QMenu *mnuHelp = nullptr;
    QAction *mnuHelpContents = nullptr;
    QAction *mnuHelpAbout = nullptr;
};

StandardMenus BuildStandardMenus(Form *form);
