#include "review/VersionInformation.h"

#include "platform/Paths.h"
#include "platform/PeVersion.h"
#include "platform/StoredPaths.h"

namespace {
constexpr int VersionStringBuffer = 128;
}

const QString NoVersionInformationText = QStringLiteral("(No version information for this file)");

QString AddReturnIfNonEmptyString(const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("\r\n");
}

bool VersionInformation::ReadVersionInformation(const QString &path, int occurrence)
{
    // A file that has gone away reads as one without version data. A file of a disc image is read where
    // it lies, never copied out for this.
    const QByteArray block =
        ImageNodeOf(path, occurrence) >= 0
            ? VersionBlockFromFile(InfoOf(path, occurrence).size,
                                   [&](int64_t offset, char *out, int64_t n) {
                                       return ReadStoredFile(path, occurrence, offset, out, n);
                                   })
            : ReadVersionBlock(RealPath(path, occurrence));
    VersionSize = int32_t(block.size());
    if (block.isEmpty()) {
        for (QString *s : {&CompanyName, &FileDescription, &FileVersion, &InternalName, &LegalCopyright,
                           &OriginalFileName, &ProductName, &ProductVersion})
            s->clear();
        return false;
    }
    VersionBuffer = block;
    const auto translation = QueryVersionValue(VersionBuffer, QStringLiteral("\\VarFileInfo\\Translation"));
    if (!translation || translation->bytes.size() < 4)
        return false;
    // Only the first translation counts: language word high, code page word low.
    const auto b = reinterpret_cast<const uint8_t *>(translation->bytes.constData());
    const uint32_t value = uint32_t(b[2]) + uint32_t(b[3]) * 256u + uint32_t(b[0]) * 65536u + uint32_t(b[1]) * 16777216u;
    LanguageCodePage = QString::number(value, 16).toUpper().rightJustified(8, QLatin1Char('0'));
    CompanyName = ReadVersionString(QStringLiteral("CompanyName"));
    FileDescription = ReadVersionString(QStringLiteral("FileDescription"));
    FileVersion = ReadVersionString(QStringLiteral("FileVersion"));
    InternalName = ReadVersionString(QStringLiteral("InternalName"));
    LegalCopyright = ReadVersionString(QStringLiteral("LegalCopyright"));
    OriginalFileName = ReadVersionString(QStringLiteral("OriginalFileName"));
    ProductName = ReadVersionString(QStringLiteral("ProductName"));
    ProductVersion = ReadVersionString(QStringLiteral("ProductVersion"));
    // Blanks alone are no version.
    return !QString(ProductVersion).remove(QLatin1Char(' ')).isEmpty();
}

QString VersionInformation::ReadVersionString(const QString &name) const
{
    const auto value =
        QueryVersionValue(VersionBuffer, QStringLiteral("\\StringFileInfo\\") + LanguageCodePage + QLatin1Char('\\') + name);
    if (!value || value->declaredLength <= 0)
        return {};
    return VersionValueText(*value).left(VersionStringBuffer);
}

QString VersionInformation::FileInformationText(const QString &path, int occurrence)
{
    if (!ReadVersionInformation(path, occurrence))
        return NoVersionInformationText;
    const std::pair<const char *, const QString *> fields[] = {
        {"Company Name:", &CompanyName},       {"File Description:", &FileDescription},
        {"File Version:", &FileVersion},       {"Internal Name:", &InternalName},
        {"Legal Copyright:", &LegalCopyright}, {"Original FileName:", &OriginalFileName},
        {"Product Name:", &ProductName},       {"Product Version:", &ProductVersion},
    };
    QString text;
    const int last = int(std::size(fields)) - 1;
    for (int i = 0; i <= last; ++i) {
        text += QLatin1String(fields[i].first) + QStringLiteral("\r\n") + *fields[i].second;
        if (i < last)
            text += QStringLiteral("\r\n") + AddReturnIfNonEmptyString(*fields[i].second);
    }
    return text;
}
