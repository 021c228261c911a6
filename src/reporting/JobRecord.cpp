#include "reporting/JobRecord.h"

#include "platform/StoredPaths.h"
#include "review/ViewerFiles.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {
QString isoTime(const QDateTime &t)
{
    return t.toOffsetFromUtc(t.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

// How the viewers sort a file of the scan.
QString kindOf(const QString &stored, bool external)
{
    if (external)
        return QStringLiteral("external");
    if (stored.right(4) == QLatin1String(".EXE"))
        return QStringLiteral("program");
    if (VideoScreenListsFile(stored))
        return QStringLiteral("video");
    if (AudioScreenListsFile(stored))
        return QStringLiteral("audio");
    if (ImageScreenListsFile(stored))
        return QStringLiteral("image");
    if (TextScreenListsFile(stored))
        return QStringLiteral("text");
    if (stored.right(4) == QLatin1String(".ZIP"))
        return QStringLiteral("archive");
    return QStringLiteral("other");
}

QJsonValue orNull(const QVariant &v)
{
    return v.isNull() ? QJsonValue() : QJsonValue::fromVariant(v);
}

QJsonValue versionOf(const ProgramFile &p)
{
    if (!p.hasVersion)
        return QJsonValue();
    return QJsonObject{{QStringLiteral("language"), p.languageCodePage},
                       {QStringLiteral("company_name"), p.companyName},
                       {QStringLiteral("file_description"), p.fileDescription},
                       {QStringLiteral("file_version"), p.fileVersion},
                       {QStringLiteral("internal_name"), p.internalName},
                       {QStringLiteral("legal_copyright"), p.legalCopyright},
                       {QStringLiteral("original_filename"), p.originalFileName},
                       {QStringLiteral("product_name"), p.productName},
                       {QStringLiteral("product_version"), p.productVersion}};
}

QString verdictWord(ExeVerdict::Kind k)
{
    return k == ExeVerdict::Licensed ? QStringLiteral("licensed")
           : k == ExeVerdict::Unlicensed ? QStringLiteral("unlicensed")
                                         : QStringLiteral("unknown");
}

QString key(const QString &stored, int occurrence)
{
    return stored + QLatin1Char('\n') + QString::number(occurrence);
}
} // namespace

QString HiddenProgramLine(const ProgramFile &program, const NameVerdict &component)
{
    if (program.stored.right(4) == QLatin1String(".EXE"))
        return QString();
    const QString what = program.format.format == QLatin1String("pe")  ? QStringLiteral("a Windows")
                         : program.format.format == QLatin1String("elf") ? QStringLiteral("an ELF")
                                                                         : QStringLiteral("a Mach-O");
    const QString role = program.format.role == QLatin1String("library") ? QStringLiteral("library")
                         : program.format.role == QLatin1String("program") ? QStringLiteral("program")
                                                                           : QStringLiteral("executable");
    QString line = ShownText(program.stored) + QStringLiteral(" holds ") + what + QLatin1Char(' ') + role;
    if (!program.originalFileName.isEmpty()) {
        line += QStringLiteral(" (OriginalFilename ") + ShownText(program.originalFileName) + QStringLiteral(": ");
        if (!component.known)
            line += QStringLiteral("no application of the catalogue)");
        else
            line += ShownText(component.application) +
                    (component.licensed ? QStringLiteral(", licensed for this client)")
                                        : QStringLiteral(", un-licensed for this client)"));
    }
    return line;
}

QJsonDocument MakeJobRecord(const JobRecordInput &in)
{
    QJsonObject record;
    record.insert(QStringLiteral("kevro_version"), QStringLiteral("%1.%2.%3")
                                                       .arg(KEVRO_VERSION_MAJOR)
                                                       .arg(KEVRO_VERSION_MINOR)
                                                       .arg(KEVRO_VERSION_PATCH));
    record.insert(QStringLiteral("client"),
                  QJsonObject{{QStringLiteral("code"), in.clientCode}, {QStringLiteral("name"), in.clientName}});
    record.insert(QStringLiteral("catalogue_number"), in.catalogueNumber);
    QJsonObject volume{{QStringLiteral("path"), in.volume},
                       {QStringLiteral("type"), in.imageFormat.isEmpty() ? QStringLiteral("folder") : QStringLiteral("image")}};
    volume.insert(QStringLiteral("format"), in.imageFormat.isEmpty() ? QJsonValue() : QJsonValue(in.imageFormat));
    record.insert(QStringLiteral("volume"), volume);
    record.insert(QStringLiteral("started"), isoTime(in.started));
    record.insert(QStringLiteral("ended"), isoTime(in.ended));
    record.insert(QStringLiteral("report"), in.reportPath);

    // The programs by their file, for the file list's marks.
    QHash<QString, int> programOf;
    for (int i = 0; i < in.programs.size(); ++i)
        programOf.insert(key(in.programs[i].stored, in.programs[i].occurrence), i);

    QString root = StoredText(in.volume);
    if (!root.endsWith(QLatin1Char('/')))
        root += QLatin1Char('/');
    const QString extract = StoredExtractFolder() + QLatin1Char('/');
    // The archives by their folder in the extract folder (the first of two that share one).
    QHash<QString, QString> archiveOf;
    for (const auto &[folder, archivePath] : in.archives)
        if (!archiveOf.contains(folder))
            archiveOf.insert(folder, archivePath);
    QJsonArray files;
    for (const ListedFile &f : FilesInWalkOrder()) {
        const bool external = ClassifyTail(f.stored) == FileTail::Unknown;
        const StoredFileInfo info = InfoOf(f.stored, f.occurrence);
        QJsonValue archive;
        QString relative = f.stored;
        if (f.stored.startsWith(extract)) {
            // A member: the archive whose folder holds it, the deepest such folder.
            for (qsizetype cut = f.stored.lastIndexOf(QLatin1Char('/')); cut >= extract.size();
                 cut = f.stored.lastIndexOf(QLatin1Char('/'), cut - 1)) {
                const auto it = archiveOf.constFind(f.stored.left(cut));
                if (it != archiveOf.constEnd()) {
                    archive = *it;
                    relative = f.stored.mid(cut + 1);
                    break;
                }
            }
        } else if (f.stored.startsWith(root)) {
            relative = f.stored.mid(root.size());
        }
        QJsonObject file{{QStringLiteral("path"), f.stored},
                         {QStringLiteral("relative"), relative},
                         {QStringLiteral("kind"), kindOf(f.stored, external)},
                         {QStringLiteral("size"), double(info.size)},
                         {QStringLiteral("hidden"), info.hidden},
                         {QStringLiteral("archive"), archive},
                         {QStringLiteral("list"), external ? QStringLiteral("external") : QStringLiteral("media")}};
        const auto program = programOf.constFind(key(f.stored, f.occurrence));
        if (program == programOf.constEnd()) {
            file.insert(QStringLiteral("executable"), QJsonValue());
        } else {
            const ProgramFile &p = in.programs[*program];
            const NameVerdict &c = in.programComponents.value(*program);
            QJsonObject executable{{QStringLiteral("format"), p.format.format},
                                   {QStringLiteral("bits"), p.format.bits.isEmpty() ? QJsonValue() : QJsonValue(p.format.bits.toInt())},
                                   {QStringLiteral("role"), p.format.role},
                                   {QStringLiteral("version"), versionOf(p)}};
            executable.insert(QStringLiteral("catalogue_component"),
                              !c.known ? QJsonValue()
                                       : QJsonValue(QJsonObject{{QStringLiteral("application"), c.application},
                                                                {QStringLiteral("application_id"), orNull(c.applicationId)},
                                                                {QStringLiteral("verdict"), c.licensed
                                                                                                ? QStringLiteral("licensed")
                                                                                                : QStringLiteral("unlicensed")}}));
            file.insert(QStringLiteral("executable"), executable);
        }
        files.append(file);
    }
    record.insert(QStringLiteral("files"), files);

    QJsonArray executables;
    if (in.evaluation) {
        for (const ExeVerdict &v : in.evaluation->verdicts) {
            const auto program = programOf.constFind(key(v.path, v.occurrence));
            executables.append(QJsonObject{
                {QStringLiteral("path"), v.path},
                {QStringLiteral("verdict"), verdictWord(v.kind)},
                {QStringLiteral("application"), v.kind == ExeVerdict::Unknown ? QJsonValue() : QJsonValue(v.application)},
                {QStringLiteral("application_id"), orNull(v.applicationId)},
                {QStringLiteral("version"), program == programOf.constEnd() ? QJsonValue() : versionOf(in.programs[*program])}});
        }
    }
    record.insert(QStringLiteral("executables"), executables);

    const auto count = [](const QString &text) { return text.toInt(); };
    int licensed = 0, unlicensed = 0;
    if (in.evaluation) {
        licensed = int(in.evaluation->licensed.size());
        unlicensed = int(in.evaluation->unlicensed.size());
    }
    record.insert(QStringLiteral("summary"),
                  QJsonObject{{QStringLiteral("licensed_applications"), licensed},
                              {QStringLiteral("unlicensed_applications"), unlicensed},
                              {QStringLiteral("unknown_programs"), int(in.results.unknownFiles.size())},
                              {QStringLiteral("video"), count(in.results.video.total)},
                              {QStringLiteral("audio"), count(in.results.audio.total)},
                              {QStringLiteral("images"), count(in.results.images.total)},
                              {QStringLiteral("text"), count(in.results.text.total)},
                              {QStringLiteral("external"), count(in.results.external.total)}});
    record.insert(QStringLiteral("warnings"), QJsonArray::fromStringList(in.warnings));
    return QJsonDocument(record);
}
