#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

// The judgement of a disc's executables: every path of the scan whose name ends in ".EXE" is known and
// licensed, known and un-licensed, or unknown. Computed once per scan; the application viewer shows it
// and the report reads it.

// A file of a known application: "NAME.EXE (12 KB)", its full stored path as its tag.
struct ApplicationFile {
    QString key;
    QString text;
    QString tag;
    int occurrence = 0; // which of the files sharing that path
};
// An application found on the disc, with the files that made it known.
struct ApplicationRoot {
    QString key;
    QString name;
    QList<ApplicationFile> files;
};
// A file that no application of the catalogue lists.
struct UnknownExe {
    QString path;
    QString fileName;
    QString sizeText;
    bool inArchive = false;
    bool hidden = false;
    int occurrence = 0; // which of the files sharing that path
};

// The application viewer's captions over its trees and grid as the screen is built, before an
// evaluation writes its own.
inline const QString StoredLicensedCaption = QStringLiteral("Licensed Programs / No License Required");
inline const QString StoredUnlicensedCaption = QStringLiteral("Un-licensed Programs");
inline const QString StoredUnknownCaption = QStringLiteral("Unknown Programs");

// The verdict on one ".EXE" of the scan, in the scan's order, with the catalogue row that decided it
// (the last matching one).
struct ExeVerdict {
    QString path;
    int occurrence = 0;
    enum Kind { Licensed, Unlicensed, Unknown } kind = Unknown;
    QString application;
    QVariant applicationId; // APP_ID; null for an unknown program
};

struct ExeEvaluation {
    // With an empty catalogue every executable is unknown and the trees keep their stored captions.
    bool catalogueEmpty = false;
    // One root per application name in each tree, in the order of the application names.
    QList<ApplicationRoot> licensed;
    QList<ApplicationRoot> unlicensed;
    // In the order of the scan's list.
    QList<UnknownExe> unknown;
    // Every ".EXE" of the scan, in its order.
    QList<ExeVerdict> verdicts;
    // The captions over the two trees and the grid; empty where the stored caption stays.
    QString licensedCaption;
    QString unlicensedCaption;
    QString unknownCaption;
};

// Evaluates the ".EXE" paths of a scan's list (stored upper-case paths, archive members included) for
// the client's licences, through the catalogue's scratch table, in one transaction on the connection
// of OpenDatabase. A failing statement raises its VbError after the transaction was
// rolled back.
ExeEvaluation EvaluateExecutables(const QStringList &mediaFiles, const QString &clientCode);

// The web address of an application's licence terms: nullopt when no application has that name, an
// empty text when it has none.
std::optional<QString> WebLicenceOf(const QString &appName);

// What the catalogue says of file names for a client, read through the same rules as the judgement:
// whether an application lists each, which (the last matching row's name and number), and whether the
// client may distribute it. One unit of work for all of them.
struct NameVerdict {
    bool known = false;
    bool licensed = false;
    QString application;
    QVariant applicationId;
};
QList<NameVerdict> JudgeNames(const QStringList &exeNames, const QString &clientCode);

// The simpler judgement by licence rows alone (nothing in the program calls it): each ".EXE" path in
// the licensed list when the client's licences name a component of that name, in the un-licensed list
// when a component of that name lies outside them, else in the unknown list.
struct ExeLists {
    QStringList licensed;
    QStringList unlicensed;
    QStringList unknown;
};
ExeLists ListExecutablesByLicence(const QStringList &mediaFiles, const QString &clientCode);
