#pragma once

#include <QString>

// Folder operations with the runtime's failure numbers.

// Deletes the folder and everything below it. With force, read-only files and folders go too.
// Raises 76 when the folder does not exist, 70 when something in it cannot be removed.
void DeleteFolder(const QString &folder, bool force);
// Raises 58 when the folder exists already, 76 when its parent does not.
void CreateFolder(const QString &folder);

// The hidden attribute here: the name begins with a dot. Raises 53 when the file does not exist and 52
// for an empty name.
bool IsHiddenFile(const QString &path);
