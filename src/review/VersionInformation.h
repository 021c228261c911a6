#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

// Gives "\r\n" after a filled text, nothing after an empty one.
QString AddReturnIfNonEmptyString(const QString &text);

// The version information of the last executable read, kept between reads as the application viewer
// keeps it: a web search uses the company name of the file looked at last.
class VersionInformation final
{
public:
    QString CompanyName;
    QString FileDescription;
    QString FileVersion;
    QString InternalName;
    QString LegalCopyright;
    QString OriginalFileName;
    QString ProductName;
    QString ProductVersion;
    QByteArray VersionBuffer;
    // Language and code page as eight hexadecimal digits, language first.
    QString LanguageCodePage;
    int32_t VersionSize = 0;

    // True when the file (a stored path; its occurrence-th file where several share it) has usable version
    // data, which only a product version makes.
    // A file without a version block empties the eight strings; one whose block has no translation
    // leaves them as they were.
    bool ReadVersionInformation(const QString &path, int occurrence = 0);
    // A string of the block in the language and code page read last; at most 128 characters, cut at
    // the first NUL.
    QString ReadVersionString(const QString &name) const;
    // The text the application viewer shows for a file.
    QString FileInformationText(const QString &path, int occurrence = 0);
};

// The text shown when a file has no usable version information.
extern const QString NoVersionInformationText;
