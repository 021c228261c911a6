#pragma once

class Form;
class FlexGrid;
class QLineEdit;

// The shared routines that touch screens.

// Puts the dialogs, the progress box and the desktop's opener behind the shared services.
void InstallScreenServices();

// The Options screen over the calling screen, modal.
void ShowOptions(Form *form);
// The About box centred over the calling screen, not modal.
void ShowAboutBox(Form *form);

// In-cell editing of a grid with a floating edit box, a sibling of the grid.
void FlexGridEditStart(FlexGrid *grid, QLineEdit *editBox, int keyAscii);
void FlexGridEditKeyCode(FlexGrid *grid, QLineEdit *editBox, int keyCode, int shift);
