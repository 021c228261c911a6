#pragma once

#include <QString>

class HoverPictures;
class QLabel;
class QPushButton;
class QWidget;

// A picture button of the catalogue screens with its caption below it, placed in twips: the button a
// square of 720 at (left, top), the caption centred under it.
QPushButton *RecordButton(QWidget *parent, const char *name, const char *labelName, const QString &caption, long left,
                          long top, QLabel **label);

// The two hidden holders of a record button's faces, the pictures "record_<kind>_normal" and
// "record_<kind>_hover", registered with the screen's hover pictures.
void RecordFaces(HoverPictures *faces, QWidget *parent, QPushButton *button, const char *normalName,
                 const char *hoverName, const QString &kind, QLabel **normal, QLabel **hover);
