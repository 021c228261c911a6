#pragma once

#include "review/ViewerScreen.h"

class HoverPictures;
class PictureView;
class QAction;
class QMenu;

// The images of a scan: the selected one in a zoomable view beside the grid, or across the screen.
class frmScanResultsImages final : public ViewerScreen
{
    Q_OBJECT
public:
    frmScanResultsImages();

    FlexGrid *gridImageResults;
    PictureView *picSelectedImage;
    QPushButton *cmdFullScreen;
    QPushButton *cmdMagnifyPlus;
    QPushButton *cmdMagnifyMinus;
    QMenu *mnuContextMenu;
    QAction *mnuContextMenuDefaultViewer;
    QAction *mnuContextMenuCopyImageToClipboard;
    QAction *mnuContextMenuCopyPathToClipboard;
    QLabel *picFullScreenIn, *picFullScreenOut, *picZoomInNormal, *picZoomInHover, *picZoomOutNormal,
        *picZoomOutHover;

    // The zoom level the view reported after the last step.
    int16_t ZoomLevel = 100;

    void ShowSelectedImage();
    void ShowFullScreenImage();
    void ZoomIn();
    void ZoomOut();

protected:
    void Form_Load() override;
    void SelectRow() override { ShowSelectedImage(); }
    QLabel *SummaryTotal(frmScanSummary *summary) const override;
    QLabel *SummaryChecked(frmScanSummary *summary) const override;
    QMenu *ContextMenu() const override { return mnuContextMenu; }

private:
    HoverPictures *m_faces;
    void cmdNext_Click();
    void cmdPrevious_Click();
};
