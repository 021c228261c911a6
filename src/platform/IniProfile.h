#pragma once

#include <QList>
#include <QPair>
#include <QString>

// The classic private profile file: "[Section]" lines, then "key=value" lines. Sections and keys are
// found whatever their case and whatever blanks surround them; a missing file holds no keys.

// Returns the value of the key, at most size - 1 characters, or the default (cut the same way).
QString GetPrivateProfileString(const QString &section, const QString &key, const QString &defaultValue, int size,
                                const QString &fileName);

// Every key=value of a section, keys as written, values trimmed; empty when the section is missing.
QList<QPair<QString, QString>> GetPrivateProfileSection(const QString &section, const QString &fileName);
bool ProfileHasSection(const QString &section, const QString &fileName);

// Writes key=value into the section, creating the file and the section as needed and leaving every
// other line as it stands. Returns false when the file cannot be written.
bool WritePrivateProfileString(const QString &section, const QString &key, const QString &value,
                               const QString &fileName);
