#include "dicom/internal/InputCorrection.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcobject.h>

#include <mutex>

namespace kivds {
namespace {

// DCMTK's switch is a global, so is the count of those who need it off.
std::mutex g_Mutex;
int g_nUsers = 0;
OFBool g_Former = OFTrue;

} // namespace

InputCorrectionOff::InputCorrectionOff()
{
    const std::lock_guard<std::mutex> lock(g_Mutex);
    if (g_nUsers++ == 0) {
        g_Former = dcmEnableAutomaticInputDataCorrection.get();
        dcmEnableAutomaticInputDataCorrection.set(OFFalse);
    }
}

InputCorrectionOff::~InputCorrectionOff()
{
    const std::lock_guard<std::mutex> lock(g_Mutex);
    if (--g_nUsers == 0)
        dcmEnableAutomaticInputDataCorrection.set(g_Former);
}

} // namespace kivds
