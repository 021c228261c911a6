#pragma once

#include "controls/Form.h"

class QLabel;
class QPushButton;

// The About box: the logo, the version and the copyright, which slide in each time it is activated.
class frmAbout final : public Form
{
    Q_OBJECT
public:
    frmAbout();

    QLabel *picKevro;
    QLabel *lblAppVersion;
    QLabel *lblCopyright;
    QLabel *lblCopyrightNotice;
    QPushButton *cmdOK;

    static QString CopyrightNotice();
    static QString CreditsLine();

protected:
    void Form_Load() override;
    void Form_Activate() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void ShowCredits();
};
