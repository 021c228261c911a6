#pragma once

#include <QList>
#include <QObject>

class Form;
class QAbstractButton;
struct StandardMenus;
class QFrame;
class QLabel;
class QString;
class QWidget;

// Small pieces that many screens share.

// The two-tone rule above a screen's buttons: one line of the given colour, placed in twips.
QFrame *RuleLine(QWidget *parent, const char *name, const char *colour, long left, long top, long width);

// The frame of a working screen: its name and title, the standard menus, a fixed size in twips below the
// menu bar and the banner across the top. Returns the central widget the screen's controls go on.
QWidget *WorkingScreen(Form *form, const char *name, const QString &title, long widthTw, long heightTw,
                       StandardMenus &menus, QLabel **banner);

// The banner picture across the top of a working screen.
QLabel *BannerPicture(QWidget *parent, long width);

// The hourglass over the whole program for as long as it lives.
struct Hourglass {
    Hourglass();
    ~Hourglass();
    Hourglass(const Hourglass &) = delete;
    Hourglass &operator=(const Hourglass &) = delete;
};

// A hidden label that holds one picture of the pictures folder, for code to read (marks, ticks, the
// faces of buttons).
QLabel *PictureHolder(QWidget *parent, const char *name, const QString &picture);

// The faces of a screen's picture buttons: a button shows its hover picture while the mouse is over it
// and its normal picture again once the mouse moves over the form's background.
class HoverPictures final : public QObject
{
public:
    explicit HoverPictures(QWidget *background);
    // sizeToPicture: the button's icon takes the picture's own size (false keeps the button's).
    void add(QAbstractButton *button, QLabel *normal, QLabel *hover, bool sizeToPicture = true);
    void ShowNormalPictures();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Face {
        QAbstractButton *button;
        QLabel *normal, *hover;
    };
    QWidget *m_background;
    QList<Face> m_faces;
};
