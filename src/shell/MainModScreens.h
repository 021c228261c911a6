#pragma once

class Form;
class FlexGrid;
class QLineEdit;
struct StandardMenus;

// The shared routines that touch screens.

// Puts the dialogs, the progress box and the desktop's opener behind the shared services.
void InstallScreenServices();

// The Options screen over the calling screen, modal.
void ShowOptions(Form *form);
// The About box centred over the calling screen, not modal.
void ShowAboutBox(Form *form);
// Tools, Options; Help, Contents; Help, About: the same on every working screen.
void ConnectOptionsAndHelp(Form *form, const StandardMenus &menus);

// In-cell editing of a grid with a floating edit box, a sibling of the grid.
void FlexGridEditStart(FlexGrid *grid, QLineEdit *editBox, int keyAscii);
void FlexGridEditKeyCode(FlexGrid *grid, QLineEdit *editBox, int keyCode, int shift);
