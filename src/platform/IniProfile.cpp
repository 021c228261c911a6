#include "platform/IniProfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

namespace {
struct ProfileText {
    QStringList lines;
    QString eol = QStringLiteral("\r\n");
    bool endsWithEol = true;
};

ProfileText readProfile(const QString &fileName)
{
    ProfileText p;
    QFile f(fileName);
    if (!f.open(QIODevice::ReadOnly))
        return p;
    const QString text = QString::fromUtf8(f.readAll());
    if (text.isEmpty())
        return p;
    if (!text.contains(QLatin1String("\r\n")) && text.contains(QLatin1Char('\n')))
        p.eol = QStringLiteral("\n");
    p.endsWithEol = text.endsWith(QLatin1Char('\n'));
    QString normal = text;
    normal.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    p.lines = normal.split(QLatin1Char('\n'));
    if (p.endsWithEol)
        p.lines.removeLast();
    return p;
}

// The section a "[name]" line opens, or a null text for any other line.
QString sectionOf(const QString &line)
{
    const QString t = line.trimmed();
    if (t.startsWith(QLatin1Char('[')) && t.contains(QLatin1Char(']')))
        return t.mid(1, t.indexOf(QLatin1Char(']')) - 1).trimmed();
    return QString();
}

bool isKeyLine(const QString &line, const QString &key, QString *value = nullptr)
{
    const QString t = line.trimmed();
    if (t.startsWith(QLatin1Char(';')))
        return false;
    const int eq = line.indexOf(QLatin1Char('='));
    if (eq < 0 || line.left(eq).trimmed().compare(key.trimmed(), Qt::CaseInsensitive) != 0)
        return false;
    if (value) {
        QString v = line.mid(eq + 1).trimmed();
        if (v.size() >= 2 && (v.front() == QLatin1Char('"') || v.front() == QLatin1Char('\'')) && v.back() == v.front())
            v = v.mid(1, v.size() - 2);
        *value = v;
    }
    return true;
}

bool sameName(const QString &a, const QString &b)
{
    return a.trimmed().compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}
} // namespace

namespace {
// Every key=value line of the section, in file order, with its key as written.
QList<QPair<QString, QString>> sectionEntries(const QString &section, const QString &fileName)
{
    QList<QPair<QString, QString>> out;
    bool inSection = false;
    for (const QString &line : readProfile(fileName).lines) {
        const QString s = sectionOf(line);
        if (!s.isNull()) {
            inSection = sameName(s, section);
            continue;
        }
        const int eq = line.indexOf(QLatin1Char('='));
        if (!inSection || eq < 0 || line.trimmed().startsWith(QLatin1Char(';')) ||
            line.trimmed().startsWith(QLatin1Char('#')))
            continue;
        QString value;
        const QString key = line.left(eq).trimmed();
        isKeyLine(line, key, &value);
        out.append({key, value});
    }
    return out;
}
} // namespace

QString GetPrivateProfileString(const QString &section, const QString &key, const QString &defaultValue, int size,
                                const QString &fileName)
{
    const int keep = size > 0 ? size - 1 : 0;
    for (const auto &[k, value] : sectionEntries(section, fileName)) {
        if (sameName(k, key))
            return value.left(keep);
    }
    return defaultValue.left(keep);
}

QList<QPair<QString, QString>> GetPrivateProfileSection(const QString &section, const QString &fileName)
{
    return sectionEntries(section, fileName);
}

bool ProfileHasSection(const QString &section, const QString &fileName)
{
    const ProfileText p = readProfile(fileName);
    for (const QString &line : p.lines) {
        const QString s = sectionOf(line);
        if (!s.isNull() && sameName(s, section))
            return true;
    }
    return false;
}

bool WritePrivateProfileString(const QString &section, const QString &key, const QString &value,
                               const QString &fileName)
{
    ProfileText p = readProfile(fileName);
    const QString newLine = key.trimmed() + QLatin1Char('=') + value;

    int sectionStart = -1; // index of the "[section]" line
    int lastInSection = -1; // last non-blank line that belongs to the section
    bool inSection = false;
    bool written = false;
    for (int i = 0; i < p.lines.size() && !written; ++i) {
        const QString s = sectionOf(p.lines[i]);
        if (!s.isNull()) {
            if (inSection)
                break;
            inSection = sameName(s, section);
            if (inSection)
                sectionStart = lastInSection = i;
            continue;
        }
        if (!inSection)
            continue;
        if (isKeyLine(p.lines[i], key)) {
            // The key keeps the spelling it has in the file.
            p.lines[i] = p.lines[i].left(p.lines[i].indexOf(QLatin1Char('='))).trimmed() + QLatin1Char('=') + value;
            written = true;
        } else if (!p.lines[i].trimmed().isEmpty()) {
            lastInSection = i;
        }
    }
    if (!written) {
        if (sectionStart < 0) {
            p.lines << QLatin1Char('[') + section + QLatin1Char(']') << newLine;
        } else {
            p.lines.insert(lastInSection + 1, newLine);
        }
    }

    // A read-only profile stays as it is: the save file would otherwise replace it.
    const QFileInfo existing(fileName);
    if (existing.exists() && !existing.isWritable())
        return false;
    QSaveFile f(fileName);
    f.setDirectWriteFallback(true);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    QString text = p.lines.join(p.eol);
    if (p.endsWithEol || !p.lines.isEmpty())
        text += p.eol;
    f.write(text.toUtf8());
    return f.commit();
}
