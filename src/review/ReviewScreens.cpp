#include "review/ReviewScreens.h"

#include "controls/Forms.h"
#include "review/frmScanResultsEXEs.h"
#include "scan/frmScanDisc.h"

Form *ReviewScreenNamed(const QString &name)
{
    if (name == QLatin1String("frmScanDisc"))
        return Forms::get<frmScanDisc>();
    if (name == QLatin1String("frmScanResultsEXEs"))
        return Forms::get<frmScanResultsEXEs>();
    return nullptr;
}
