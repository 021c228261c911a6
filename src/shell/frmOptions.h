#pragma once

#include "controls/Form.h"

class DriveList;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

// The Options screen: the default scan device and the default report, kept in kevro.ini.
class frmOptions final : public Form
{
    Q_OBJECT
public:
    frmOptions();

    QLabel *lblDefaultScanDevice;
    DriveList *Drive1;
    QGroupBox *fraDefaultReportType;
    QRadioButton *optText;
    QRadioButton *optHTML;
    QGroupBox *fraReportContent;
    QRadioButton *optCheckedFiles;
    QRadioButton *optAllFiles;
    QGroupBox *fraCompression;
    QCheckBox *chkCheckCompressedFiles;
    QLabel *lblExtractFolder;
    QLineEdit *txtExtractFolder;
    QPushButton *cmdBrowse;
    QPushButton *cmdOK;
    QPushButton *cmdCancel;

protected:
    void Form_Load() override;

private:
    void cmdOK_Click();
};
