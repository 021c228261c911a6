#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"
#include "review/ExeEvaluation.h"
#include "review/VersionInformation.h"

class FlexGrid;
class QAction;
class QFrame;
class QLabel;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// The application viewer: the first review screen after a scan. Loading it judges the disc's
// executables; it shows the licensed and un-licensed applications in two trees and the unknown
// programs in a grid, and reads the version information of the file the operator selects. It keeps
// its results, hidden, for the rest of the job.
class frmScanResultsEXEs final : public Form
{
    Q_OBJECT
public:
    frmScanResultsEXEs();

    QLabel *picBanner;
    QLabel *lblLicensedPrograms;
    QTreeWidget *treLicensedEXEs;
    QLabel *lblUnlicensedPrograms;
    QTreeWidget *treUnlicensedEXEs;
    QLabel *lblUnknownPrograms;
    FlexGrid *gridUnknownEXEs;
    QLabel *lblFileInfoCaption;
    QPlainTextEdit *txtFileInfo;
    QPushButton *cmdRunEXE;
    QPushButton *cmdPrevious;
    QPushButton *cmdNext;
    QListWidget *lstLicensedEXEs;
    QListWidget *lstUnlicensedEXEs;
    QListWidget *lstUnknownEXEs;
    QLabel *picHiddenIcon;
    QLabel *picZipIcon;
    QLabel *picTick;
    QFrame *Line1;
    QFrame *linDark;
    StandardMenus menus;

    QMenu *mnuContextLicensed;
    QAction *mnuContextLicensedLaunchEXE;
    QAction *mnuContextLicensedBreak;
    QAction *mnuContextLicensedShowWebsite;
    QMenu *mnuContextUnlicensed;
    QAction *mnuContextUnlicensedLaunchExe;
    QAction *mnuContextUnlicensedBreak;
    QAction *mnuContextUnlicensedAddToLicenced;
    QAction *mnuContextUnlicensedShowWebsite;
    QMenu *mnuContextUnknown;
    QAction *mnuContextUnknownLaunchEXE;
    QAction *mnuContextUnknownBreak;
    QAction *mnuContextUnknownAddToFileDb;
    QAction *mnuContextUnknownSearchOnWeb;

    // The node's file path; empty for an application's root.
    static QString NodeTag(const QTreeWidgetItem *node);
    // Which of the files that share the node's tag (its path) the node stands for.
    static int NodeOccurrence(const QTreeWidgetItem *node);
    static QString NodeKey(const QTreeWidgetItem *node);

    // The judgement this screen shows, for the summary and the report.
    const ExeEvaluation &Evaluation() const { return m_evaluation; }
    // The version information read last.
    const VersionInformation &FileInformation() const { return m_info; }

    void EvaluateExecutables();
    // Fills the three list boxes by the simpler judgement; nothing calls it.
    void ShowEXEs();
    void DisplaySelectedLicenseWebsite(const QString &appName);

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void FillApplicationTrees();
    void ShowFileInformation(const QString &path, int occurrence);
    void LaunchProgram(const QString &path, int occurrence);
    // The current row of the unknown grid: its path and which of the files sharing it.
    QString UnknownRowPath() const;
    int UnknownRowOccurrence() const;
    void SearchWeb(const QString &fileName);
    void tree_Select(QTreeWidget *tree);
    void tree_MouseUp(QTreeWidget *tree, int button);
    void gridUnknownEXEs_MouseUp(int button);
    void cmdNext_Click();
    void cmdPrevious_Click();

    ExeEvaluation m_evaluation;
    VersionInformation m_info;
    bool m_nameSortAscending = false;
    bool m_sizeSortAscending = false;
};
