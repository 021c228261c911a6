#pragma once

#include <QString>

class QLabel;
class QPushButton;
class QWidget;

// A picture button of the catalogue screens with its caption below it, placed in twips: the button a
// square of 720 at (left, top), the caption centred under it.
QPushButton *RecordButton(QWidget *parent, const char *name, const char *labelName, const QString &caption, long left,
                          long top, QLabel **label);
