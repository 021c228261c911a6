#pragma once

#include "controls/Form.h"

class QLabel;
class QProgressBar;

// The box that long operations share; driven by UpdateProgressBox.
class frmProgressBox final : public Form
{
    Q_OBJECT
public:
    frmProgressBox();

    QLabel *lblStatus;
    QProgressBar *ProgressBar;
};
