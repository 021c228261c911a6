#include "review/ReviewScreens.h"

#include "controls/Forms.h"
#include "reporting/frmScanSummary.h"
#include "review/frmScanResultsEXEs.h"
#include "review/frmScanResultsImages.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "scan/frmScanDisc.h"

Form *ReviewScreenNamed(const QString &name)
{
    if (name == QLatin1String("frmScanDisc"))
        return Forms::get<frmScanDisc>();
    if (name == QLatin1String("frmScanResultsEXEs"))
        return Forms::get<frmScanResultsEXEs>();
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
