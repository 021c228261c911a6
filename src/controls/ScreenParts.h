#pragma once

class QFrame;
class QLabel;
class QWidget;

// Small pieces that many screens share.

// The two-tone rule above a screen's buttons: one line of the given colour, placed in twips.
QFrame *RuleLine(QWidget *parent, const char *name, const char *colour, long left, long top, long width);

// The banner picture across the top of a working screen.
QLabel *BannerPicture(QWidget *parent, long width);

// The hourglass over the whole program for as long as it lives.
struct Hourglass {
    Hourglass();
    ~Hourglass();
    Hourglass(const Hourglass &) = delete;
    Hourglass &operator=(const Hourglass &) = delete;
};
