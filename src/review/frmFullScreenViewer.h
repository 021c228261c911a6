#pragma once

#include "controls/Form.h"

class PictureView;
class QPushButton;

// One picture across the whole screen; any click on it, or Close, ends the view.
class frmFullScreenViewer final : public Form
{
    Q_OBJECT
public:
    frmFullScreenViewer();

    PictureView *picImage;
    QPushButton *cmdClose;

    // A picture larger than the screen is scaled by its longer side, a smaller one left as it is.
    void FitPictureToScreen();

protected:
    void Form_Activate() override;
    void mousePressEvent(QMouseEvent *event) override;
};
