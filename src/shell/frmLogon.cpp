#include "shell/frmLogon.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "controls/Forms.h"
#include "controls/Pictures.h"
#include "shell/frmMainMenu.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

frmLogon::frmLogon()
{
    setObjectName(QStringLiteral("frmLogon"));
    setWindowTitle(QStringLiteral("KEVRO - Logon"));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    resize(TwipsToPixels(6300), TwipsToPixels(3000));

    picLogo = Named(new QLabel(central), "picLogo");
    picLogo->setAlignment(Qt::AlignCenter);
    PlaceTw(picLogo, 300, 600, 1200, 1200);
    for (int i = 1; i <= 8; ++i)
        imglstLoginAnim << LoadPicture(QStringLiteral("logon_%1").arg(i));

    frmKevroLogon = Named(new QGroupBox(QStringLiteral("Logon To KEVRO"), central), "frmKevroLogon");
    PlaceTw(frmKevroLogon, 1740, 240, 4260, 1800);
    lblUserName = Named(new QLabel(QStringLiteral("Username:"), frmKevroLogon), "lblUserName");
    PlaceTw(lblUserName, 240, 480, 1200, 330);
    txtUserName = Named(new QLineEdit(frmKevroLogon), "txtUserName");
    PlaceTw(txtUserName, 1440, 420, 2580, 390);
    lblPassword = Named(new QLabel(QStringLiteral("Password:"), frmKevroLogon), "lblPassword");
    PlaceTw(lblPassword, 240, 1080, 1200, 330);
    txtPassword = Named(new QLineEdit(frmKevroLogon), "txtPassword");
    txtPassword->setEchoMode(QLineEdit::Password);
    PlaceTw(txtPassword, 1440, 1020, 2580, 390);

    txtGo = Named(new QPushButton(QStringLiteral("&Logon"), central), "txtGo");
    txtGo->setDefault(true);
    PlaceTw(txtGo, 3420, 2280, 1200, 450);
    cmdCancel = Named(new QPushButton(QStringLiteral("&Cancel"), central), "cmdCancel");
    PlaceTw(cmdCancel, 4800, 2280, 1200, 450);

    On(txtGo, &QPushButton::clicked, this, [this] { Submit(); });
    On(txtUserName, &QLineEdit::returnPressed, this, [this] { Submit(); });
    On(txtPassword, &QLineEdit::returnPressed, this, [this] { Submit(); });
    On(cmdCancel, &QPushButton::clicked, this, [] { EndProcess(0); });
}

void frmLogon::Form_Load()
{
    AnimationRunning = true;
}

void frmLogon::Form_Activate()
{
    // The logo turns while the screen waits; Pause lets the fields and buttons work meanwhile.
    QPointer<frmLogon> self(this);
    int round = 1;
    while (self && AnimationRunning && !imglstLoginAnim.isEmpty()) {
        for (int i = 0; i < imglstLoginAnim.size() && self && AnimationRunning; ++i) {
            picLogo->setPixmap(imglstLoginAnim[i]);
            Pause(110);
        }
        for (int i = imglstLoginAnim.size() - 1; i >= 0 && self && AnimationRunning; --i) {
            picLogo->setPixmap(imglstLoginAnim[i]);
            Pause(100);
        }
        if (++round > 5)
            round = 1;
    }
}

void frmLogon::Submit()
{
    if (txtPassword->text() != QLatin1String(Password) || txtUserName->text() != QLatin1String(UserName)) {
        MsgBox(QStringLiteral("Username and/or password are not correct"), vbExclamation);
        return;
    }
    AnimationRunning = false;
    auto *menu = Forms::get<frmMainMenu>();
    menu->setLeft(ScreenWidthTw() / 2 - menu->Width() / 2);
    menu->setTop(ScreenHeightTw() / 2 - menu->Height() / 2);
    DoEvents();
    EnlargeFormAnim();
    menu->show();
    hide();
}

void frmLogon::EnlargeFormAnim()
{
    for (QWidget *w : std::initializer_list<QWidget *>{picLogo, frmKevroLogon, lblUserName, lblPassword, txtPassword,
                                                      txtGo, cmdCancel})
        w->hide();
    for (int i = 1; i <= 16; ++i) {
        setLeft(Left() - i * 10);
        setWidth(Width() + i * 20);
        setTop(Top() - i * 10);
        setHeight(Height() + i * 20);
        Pause(i);
    }
}

void frmLogon::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}
