#include "shell/frmOptions.h"

#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "controls/DriveList.h"
#include "controls/Forms.h"
#include "reporting/frmScanSummary.h"
#include "shell/MainMod.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

frmOptions::frmOptions()
{
    setObjectName(QStringLiteral("frmOptions"));
    setWindowTitle(QStringLiteral("Options"));
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    auto *central = new QWidget(this);
    setCentralWidget(central);
    setFixedSize(TwipsToPixels(6180), TwipsToPixels(4620));

    lblDefaultScanDevice = Named(new QLabel(QStringLiteral("Default &Scan Device:"), central), "lblDefaultScanDevice");
    PlaceTw(lblDefaultScanDevice, 240, 270, 1950, 300);
    Drive1 = Named(new DriveList(central), "Drive1");
    lblDefaultScanDevice->setBuddy(Drive1);
    PlaceTw(Drive1, 2220, 210, 3720, 390);

    fraDefaultReportType = Named(new QGroupBox(QStringLiteral("Default Report Type"), central), "fraDefaultReportType");
    PlaceTw(fraDefaultReportType, 240, 780, 2760, 1230);
    optText = Named(new QRadioButton(QStringLiteral("Plain Text"), fraDefaultReportType), "optText");
    PlaceTw(optText, 240, 390, 2300, 330);
    optHTML = Named(new QRadioButton(QStringLiteral("HTML"), fraDefaultReportType), "optHTML");
    PlaceTw(optHTML, 240, 765, 2300, 330);

    fraReportContent = Named(new QGroupBox(QStringLiteral("Report Content"), central), "fraReportContent");
    PlaceTw(fraReportContent, 3180, 780, 2760, 1230);
    optCheckedFiles = Named(new QRadioButton(QStringLiteral("Checked Files"), fraReportContent), "optCheckedFiles");
    PlaceTw(optCheckedFiles, 240, 390, 2300, 330);
    optAllFiles = Named(new QRadioButton(QStringLiteral("All Files"), fraReportContent), "optAllFiles");
    PlaceTw(optAllFiles, 240, 765, 2300, 330);

    fraCompression = Named(new QGroupBox(QStringLiteral("Compression Options"), central), "fraCompression");
    PlaceTw(fraCompression, 240, 2160, 5700, 1500);
    chkCheckCompressedFiles =
        Named(new QCheckBox(QStringLiteral("Check Compressed Files"), fraCompression), "chkCheckCompressedFiles");
    chkCheckCompressedFiles->setChecked(true);
    PlaceTw(chkCheckCompressedFiles, 240, 390, 3000, 330);
    lblExtractFolder = Named(new QLabel(QStringLiteral("Extract Folder:"), fraCompression), "lblExtractFolder");
    PlaceTw(lblExtractFolder, 240, 900, 1380, 300);
    txtExtractFolder = Named(new QLineEdit(fraCompression), "txtExtractFolder");
    txtExtractFolder->setReadOnly(true);
    PlaceTw(txtExtractFolder, 1650, 840, 2790, 390);
    cmdBrowse = Named(new QPushButton(QStringLiteral("&Browse"), fraCompression), "cmdBrowse");
    PlaceTw(cmdBrowse, 4560, 825, 960, 420);

    cmdOK = Named(new QPushButton(QStringLiteral("OK"), central), "cmdOK");
    cmdOK->setDefault(true);
    PlaceTw(cmdOK, 3420, 3900, 1200, 450);
    cmdCancel = Named(new QPushButton(QStringLiteral("&Cancel"), central), "cmdCancel");
    PlaceTw(cmdCancel, 4740, 3900, 1200, 450);

    On(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    On(cmdCancel, &QPushButton::clicked, this, [this] { Unload(); });
    // cmdBrowse has no action: the extract folder is fixed.
}

void frmOptions::Form_Load()
{
    try {
        const QString type = ReadIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportType ")).toUpper().left(4);
        if (type == QLatin1String("HTML"))
            optHTML->setChecked(true);
        else if (type == QLatin1String("TEXT"))
            optText->setChecked(true);

        const QString content =
            ReadIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportContent ")).toUpper().left(3);
        if (content == QLatin1String("ALL"))
            optAllFiles->setChecked(true);
        else if (content == QLatin1String("CHK"))
            optCheckedFiles->setChecked(true);

        Drive1->setDrive(DeviceFromIniValue(ReadDefaultDevice()));
        txtExtractFolder->setText(ExtractFolder());
    } catch (const VbError &e) {
        if (e.number == VbErr::DeviceUnavailable) {
            MsgBox(QStringLiteral("Default device not currently available."), vbCritical);
            // The second entry; a machine with a single volume keeps its only one.
            Drive1->setListIndex(std::min(1, Drive1->ListCount() - 1));
        } else {
            MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                       QStringLiteral(" occured - can not show options."),
                   vbExclamation);
        }
    }
}

void frmOptions::cmdOK_Click()
{
    try {
        WriteIniKey(QStringLiteral("Devices"), QStringLiteral("DefaultDevice"), Drive1->Drive());
        // The summary follows the new default at once.
        QString type = QStringLiteral("HTML");
        if (optHTML->isChecked()) {
            type = QStringLiteral("HTML");
            Forms::get<frmScanSummary>()->optHTML->setChecked(true);
        } else if (optText->isChecked()) {
            type = QStringLiteral("TEXT");
            Forms::get<frmScanSummary>()->optText->setChecked(true);
        } else {
            Forms::get<frmScanSummary>()->optHTML->setChecked(true);
        }
        WriteIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportType"), type);
        WriteIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportContent"),
                    optAllFiles->isChecked() ? QStringLiteral("ALL") : QStringLiteral("CHK"));
        Unload();
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Could not write to ") + AppTitle() + QStringLiteral(" Configuration file"),
               vbCritical);
    }
}
