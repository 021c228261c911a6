#pragma once

#include "controls/Form.h"

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// A logon screen for a start-up that wants one: a user name and a password checked against two
// constants; on success the window swells and opens the main menu. The start-up of this program does
// not show it.
class frmLogon final : public Form
{
    Q_OBJECT
public:
    static constexpr const char *UserName = "bimpo";
    static constexpr const char *Password = "tarvel";

    frmLogon();

    QGroupBox *frmKevroLogon;
    QLabel *lblUserName;
    QLineEdit *txtUserName;
    QLabel *lblPassword;
    QLineEdit *txtPassword;
    QPushButton *txtGo;
    QPushButton *cmdCancel;
    QLabel *picLogo;
    QList<QPixmap> imglstLoginAnim;

    bool AnimationRunning = false;

    // Hides the fields and grows the window around its middle in 16 steps.
    void EnlargeFormAnim();

protected:
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void Submit();
};
