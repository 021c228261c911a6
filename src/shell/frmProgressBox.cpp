#include "shell/frmProgressBox.h"

#include <QLabel>
#include <QProgressBar>

frmProgressBox::frmProgressBox()
{
    setObjectName(QStringLiteral("frmProgressBox"));
    setWindowTitle(QStringLiteral("Progress Box"));
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint | Qt::WindowStaysOnTopHint);
    auto *central = new QWidget(this);
    setCentralWidget(central);
    setFixedSize(TwipsToPixels(5400), TwipsToPixels(1500));

    lblStatus = new QLabel(QStringLiteral("Populating Something..."), central);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    PlaceTw(lblStatus, 240, 180, 4920, 360);

    ProgressBar = new QProgressBar(central);
    ProgressBar->setObjectName(QStringLiteral("ProgressBar"));
    ProgressBar->setRange(0, 100);
    ProgressBar->setTextVisible(false);
    PlaceTw(ProgressBar, 240, 660, 4920, 330);
}
