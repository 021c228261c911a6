#pragma once

// The program's start: refuses a second copy, shows the splash, loads the main menu with the client
// lists, empties the extract folder, and shows the main menu. Returns the program's exit code.
int Main();
