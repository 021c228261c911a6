#include "review/frmScanResultsImages.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/KeyCodes.h"
#include "controls/PictureView.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/ViewerFiles.h"
#include "review/frmFullScreenViewer.h"
#include "scan/frmScanDisc.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace {
constexpr long FormWidth = 11400;
constexpr long FormHeight = 7680;
} // namespace

frmScanResultsImages::frmScanResultsImages()
    : ViewerScreen("frmScanResultsImages", QStringLiteral("KEVRO - Image Viewer"),
                   {"gridImageResults", 2420, 800, QStringLiteral(" image files found"), QStringLiteral("Image"), true,
                    ImageScreenListsFile},
                   FormWidth, FormHeight)
{
    gridImageResults = Grid();
    lblResultComment->setText(QStringLiteral("images were found"));
    PlaceTw(lblResultComment, 240, 1020, 4200, 270);
    PlaceTw(gridImageResults, 240, 1290, 4200, 4860);
    picSelectedImage = Named(new PictureView(m_central), "picSelectedImage");
    PlaceTw(picSelectedImage, 4620, 1290, 6540, 4380);
    cmdMagnifyMinus = Named(new QPushButton(QStringLiteral("Zoom Out"), m_central), "cmdMagnifyMinus");
    PlaceTw(cmdMagnifyMinus, 6840, 5760, 1320, 390);
    cmdMagnifyPlus = Named(new QPushButton(QStringLiteral("Zoom In"), m_central), "cmdMagnifyPlus");
    PlaceTw(cmdMagnifyPlus, 8220, 5760, 1320, 390);
    cmdFullScreen = Named(new QPushButton(QStringLiteral("Full Screen"), m_central), "cmdFullScreen");
    PlaceTw(cmdFullScreen, 9600, 5760, 1560, 390);
    PlaceTw(lblCurrentPath, 240, 6240, 10920, 270);
    picFullScreenIn = PictureHolder(m_central, "picFullScreenIn", QStringLiteral("full_screen_in"));
    picFullScreenOut = PictureHolder(m_central, "picFullScreenOut", QStringLiteral("full_screen_out"));
    picZoomInNormal = PictureHolder(m_central, "picZoomInNormal", QStringLiteral("zoom_in_normal"));
    picZoomInHover = PictureHolder(m_central, "picZoomInHover", QStringLiteral("zoom_in_hover"));
    picZoomOutNormal = PictureHolder(m_central, "picZoomOutNormal", QStringLiteral("zoom_out_normal"));
    picZoomOutHover = PictureHolder(m_central, "picZoomOutHover", QStringLiteral("zoom_out_hover"));
    m_faces = new HoverPictures(m_central);
    m_faces->add(cmdFullScreen, picFullScreenOut, picFullScreenIn);
    m_faces->add(cmdMagnifyPlus, picZoomInNormal, picZoomInHover);
    m_faces->add(cmdMagnifyMinus, picZoomOutNormal, picZoomOutHover);

    mnuContextMenu = Named(new QMenu(this), "mnuContextMenu");
    mnuContextMenuDefaultViewer =
        Named(mnuContextMenu->addAction(QStringLiteral("&Open With Default Viewer")), "mnuContextMenuDefaultViewer");
    mnuContextMenuCopyImageToClipboard = Named(mnuContextMenu->addAction(QStringLiteral("Copy &Image To Clipboard")),
                                               "mnuContextMenuCopyImageToClipboard");
    mnuContextMenuCopyPathToClipboard = Named(mnuContextMenu->addAction(QStringLiteral("Copy &Path To Clipboard")),
                                              "mnuContextMenuCopyPathToClipboard");

    On(gridImageResults, &FlexGrid::DblClick, this, [this] {
        if (gridImageResults->MouseRow() != 0)
            ShowFullScreenImage();
    });
    On(gridImageResults, &FlexGrid::KeyDown, this, [this](int keyCode) {
        if (keyCode == vbKeyOemPlus)
            ZoomIn();
        else if (keyCode == vbKeyOemMinus)
            ZoomOut();
    });
    On(cmdFullScreen, &QPushButton::clicked, this, [this] { ShowFullScreenImage(); });
    On(cmdMagnifyPlus, &QPushButton::clicked, this, [this] { ZoomIn(); });
    On(cmdMagnifyMinus, &QPushButton::clicked, this, [this] { ZoomOut(); });
    // Opening from the menu is no tick: only the picture shown here counts.
    On(mnuContextMenuDefaultViewer, &QAction::triggered, this, [this] {
        if (HasDataRow())
            OpenWithDefaultProgram(RowFile());
    });
    On(mnuContextMenuCopyImageToClipboard, &QAction::triggered, this, [this] {
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setImage(picSelectedImage->Picture());
    });
    On(mnuContextMenuCopyPathToClipboard, &QAction::triggered, this, [this] {
        if (!HasDataRow())
            return;
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setText(RowPath());
    });
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
}

void frmScanResultsImages::Form_Load()
{
    Fill();
    m_faces->ShowNormalPictures();
}

QLabel *frmScanResultsImages::SummaryTotal(frmScanSummary *summary) const
{
    return summary->lblImagesTotal;
}

QLabel *frmScanResultsImages::SummaryChecked(frmScanSummary *summary) const
{
    return summary->lblImagesChecked;
}

void frmScanResultsImages::ShowSelectedImage()
{
    ShowPath();
    gridImageResults->setEnabled(false);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    try {
        picSelectedImage->LoadPicture(RowFile());
    } catch (const VbError &) {
        picSelectedImage->Clear();
        gridImageResults->setEnabled(true);
        QApplication::restoreOverrideCursor();
        MsgBox(QStringLiteral("Can not display image - it may be corrupt."), vbExclamation);
        gridImageResults->setFocus();
        return;
    }
    gridImageResults->setEnabled(true);
    gridImageResults->setFocus();
    QApplication::restoreOverrideCursor();
    TickRow();
    gridImageResults->setCol(0);
    gridImageResults->setFocus();
    DoEvents();
}

void frmScanResultsImages::ZoomIn()
{
    if (picSelectedImage->HasPicture()) {
        picSelectedImage->ZoomIn();
        ZoomLevel = picSelectedImage->ZoomLevel();
    }
    gridImageResults->setFocus();
}

void frmScanResultsImages::ZoomOut()
{
    if (picSelectedImage->HasPicture()) {
        picSelectedImage->ZoomOut();
        ZoomLevel = picSelectedImage->ZoomLevel();
    }
    gridImageResults->setFocus();
}

void frmScanResultsImages::ShowFullScreenImage()
{
    auto *viewer = Forms::get<frmFullScreenViewer>();
    try {
        if (gridImageResults->Rows() < 1)
            RaiseVbError(VbErr::GridSubscriptOutOfRange);
        viewer->picImage->LoadPicture(RowFile());
        // The picture's own units against the screen's twips: the halves and quarters are kept as they are.
        const long screenW = ScreenWidthTw(), screenH = ScreenHeightTw();
        const long picW = viewer->picImage->PictureWidth(), picH = viewer->picImage->PictureHeight();
        viewer->Move(0, 0);
        viewer->setFixedSize(TwipsToPixels(screenW), TwipsToPixels(screenH));
        PlaceTw(viewer->picImage, screenW / 2 - picW / 4, screenH / 2 - picH / 4, picW / 2 + 300, picH / 2 + 300);
        const long closeW = WidthTw(viewer->cmdClose), closeH = HeightTw(viewer->cmdClose);
        PlaceTw(viewer->cmdClose, screenW - 2 * closeW, screenH - 2 * closeH + 300, closeW, closeH);
    } catch (const VbError &) {
        Forms::unload<frmFullScreenViewer>();
        MsgBox(QStringLiteral("Can not display image, it may be corrupt."), vbExclamation);
        return;
    }
    viewer->show();
}

void frmScanResultsImages::cmdNext_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    GoNext({{scan->chkTextFiles, QStringLiteral("frmScanResultsText")},
            {scan->chkOtherFiles, QStringLiteral("frmScanResultsOther")},
            {nullptr, QStringLiteral("frmScanSummary")}},
           true);
}

void frmScanResultsImages::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    // Video is asked twice where the programs' box belongs: Back never reaches the application viewer.
    GoBack({{scan->chkAudioFiles, QStringLiteral("frmScanResultsAudio")},
            {scan->chkVideoFiles, QStringLiteral("frmScanResultsVideo")},
            {nullptr, QStringLiteral("frmScanDisc")}});
}
