#include "review/ReviewScreens.h"

#include "controls/Forms.h"
#include "controls/MediaPlayer.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/frmScanResultsEXEs.h"
#include "review/frmScanResultsAudio.h"
#include "review/frmScanResultsImages.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "review/frmScanResultsVideo.h"
#include "scan/frmScanDisc.h"

void UnlatchReviewPlayers()
{
    // Each player gets a harmless file in place of the one it holds; touching a screen loads it.
    const QString harmless = AppPath() + QStringLiteral("/reports/htmlicon.jpg");
    const auto unlatch = [&](const std::function<void()> &step) {
        try {
            step();
            DoEvents();
        } catch (const VbError &e) {
            MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                       QStringLiteral(" occured when trying to unlatch mediaplayer."),
                   vbExclamation);
        }
    };
    unlatch([&] { Forms::get<frmScanResultsVideo>()->MediaPlayer1->setFileName(harmless); });
    unlatch([&] { Forms::get<frmScanResultsAudio>()->MediaPlayer1->setFileName(harmless); });
}

Form *ReviewScreenNamed(const QString &name)
{
    if (name == QLatin1String("frmScanDisc"))
        return Forms::get<frmScanDisc>();
    if (name == QLatin1String("frmScanResultsEXEs"))
        return Forms::get<frmScanResultsEXEs>();
    if (name == QLatin1String("frmScanResultsVideo"))
        return Forms::get<frmScanResultsVideo>();
    if (name == QLatin1String("frmScanResultsAudio"))
        return Forms::get<frmScanResultsAudio>();
    if (name == QLatin1String("frmScanResultsImages"))
        return Forms::get<frmScanResultsImages>();
    if (name == QLatin1String("frmScanResultsText"))
        return Forms::get<frmScanResultsText>();
    if (name == QLatin1String("frmScanResultsOther"))
        return Forms::get<frmScanResultsOther>();
    if (name == QLatin1String("frmScanSummary"))
        return Forms::get<frmScanSummary>();
    return nullptr;
}
