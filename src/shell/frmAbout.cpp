#include "shell/frmAbout.h"

#include "platform/Events.h"
#include "platform/VbError.h"
#include "controls/Pictures.h"

#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

frmAbout::frmAbout()
{
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About KEVRO"));
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("aboutBackground"));
    central->setStyleSheet(QStringLiteral("#aboutBackground { background: #ffffff; }"));
    setCentralWidget(central);
    setFixedSize(TwipsToPixels(9000), TwipsToPixels(5100));

    picKevro = new QLabel(central);
    picKevro->setObjectName(QStringLiteral("picKevro"));
    picKevro->setPixmap(LoadPicture(QStringLiteral("logo")));
    picKevro->setScaledContents(true);
    picKevro->setToolTip(QStringLiteral("KEVRO"));
    PlaceTw(picKevro, 300, 300, 4800, 2400);
    picKevro->installEventFilter(this);

    lblAppVersion = new QLabel(QStringLiteral("KEVRO v0.00"), central);
    lblAppVersion->setObjectName(QStringLiteral("lblAppVersion"));
    QFont big = lblAppVersion->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    lblAppVersion->setFont(big);
    lblAppVersion->setStyleSheet(QStringLiteral("color: #1f3a5f;"));
    PlaceTw(lblAppVersion, 5300, 700, 3600, 480);

    lblCopyright = new QLabel(QStringLiteral("Disc content and licence checker"), central);
    lblCopyright->setObjectName(QStringLiteral("lblCopyright"));
    lblCopyright->setStyleSheet(QStringLiteral("color: #4a5a6a;"));
    lblCopyright->setWordWrap(true);
    PlaceTw(lblCopyright, 5300, 1260, 3500, 900);

    lblCopyrightNotice = new QLabel(central);
    lblCopyrightNotice->setObjectName(QStringLiteral("lblCopyrightNotice"));
    lblCopyrightNotice->setWordWrap(true);
    lblCopyrightNotice->setStyleSheet(QStringLiteral("color: #4a5a6a;"));
    PlaceTw(lblCopyrightNotice, 136, 2950, 8700, 900);

    cmdOK = new QPushButton(QStringLiteral("OK"), central);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    PlaceTw(cmdOK, 7500, 4440, 1200, 420);
    On(cmdOK, &QPushButton::clicked, this, [this] { Unload(); });
}

QString frmAbout::CopyrightNotice()
{
    return QStringLiteral("Copyright (c) 2026 the KEVRO developers. For use by the staff of the replication plant "
                          "that licensed it. KEVRO records what is on a master and what its client may "
                          "distribute; it does not replace the plant's own licence checks.");
}

QString frmAbout::CreditsLine()
{
    return QStringLiteral("Built by the KEVRO team, with thanks to the operators who checked its first discs.");
}

void frmAbout::Form_Load()
{
    lblCopyrightNotice->setText(CopyrightNotice());
    lblAppVersion->setText(QStringLiteral("KEVRO v%1.%2.%3")
                               .arg(KEVRO_VERSION_MAJOR)
                               .arg(KEVRO_VERSION_MINOR)
                               .arg(KEVRO_VERSION_PATCH));
}

void frmAbout::Form_Activate()
{
    QPointer<frmAbout> self(this);
    SetLeftTw(lblAppVersion, 8000);
    SetLeftTw(lblCopyright, 8000);
    SetLeftTw(lblCopyrightNotice, -8000);
    Pause(150);
    for (int i = 1; i <= 12 && self; ++i) {
        SetLeftTw(lblAppVersion, LeftTw(lblAppVersion) - 225);
        SetLeftTw(lblCopyright, LeftTw(lblCopyright) - 225);
        Pause(static_cast<long>(i * 1.5));
    }
    if (!self)
        return;
    Pause(50);
    for (int i = 1; i <= 12 && self; ++i) {
        SetLeftTw(lblCopyrightNotice, LeftTw(lblCopyrightNotice) + 678);
        Pause(static_cast<long>(i * 1.5));
    }
}

bool frmAbout::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == picKevro && event->type() == QEvent::MouseButtonDblClick) {
        RunHandler([this] { ShowCredits(); });
        return true;
    }
    return Form::eventFilter(watched, event);
}

void frmAbout::ShowCredits()
{
    lblCopyrightNotice->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    SetTopTw(lblCopyrightNotice, 4000);
    SetLeftTw(lblCopyrightNotice, -300);
    lblCopyrightNotice->setText(CreditsLine());
}
