#pragma once

// Installs the presenter that shows message boxes as dialogs on the screen.
void InstallMsgBoxDialogs();
