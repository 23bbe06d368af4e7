// PWM output modules on a serial port: channel settings, starting the
// outputs, saving the configuration, and the PWM and DI status.
#pragma once

#include <cstddef>

#include "plugin/export.h"

namespace icp::com {

// "ICPCOM_GetPWMDIOStatus" hands the SDK two arrays of one byte per channel,
// 32 channels whatever the module has: PWM outputs running, inputs active.
inline constexpr std::size_t pwm_status_channels = 32;
using StatusBytes = unsigned char[pwm_status_channels];

// Its result: a vector of two Reals, the PWM mask then the DI mask, bit i set
// where byte i is not 0.
nvValue pwm_status_masks(const StatusBytes& pwm, const StatusBytes& di);

}  // namespace icp::com

ICP_EXPORT icp::nvValue icpcom_setpwmduty(const icp::nvValue& handle, const icp::nvValue& slot,
                                          const icp::nvValue& channel, const icp::nvValue& duty);
ICP_EXPORT icp::nvValue icpcom_getpwmduty(const icp::nvValue& handle, const icp::nvValue& slot,
                                          const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpcom_setpwmfrequency(const icp::nvValue& handle, const icp::nvValue& slot,
                                               const icp::nvValue& channel, const icp::nvValue& frequency);
ICP_EXPORT icp::nvValue icpcom_getpwmfrequency(const icp::nvValue& handle, const icp::nvValue& slot,
                                               const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpcom_setpwmmode(const icp::nvValue& handle, const icp::nvValue& slot,
                                          const icp::nvValue& channel, const icp::nvValue& mode);
ICP_EXPORT icp::nvValue icpcom_getpwmmode(const icp::nvValue& handle, const icp::nvValue& slot,
                                          const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpcom_setpwmtrigger(const icp::nvValue& handle, const icp::nvValue& slot,
                                             const icp::nvValue& channel, const icp::nvValue& trigger);
ICP_EXPORT icp::nvValue icpcom_getpwmtrigger(const icp::nvValue& handle, const icp::nvValue& slot,
                                             const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpcom_setpwmstart(const icp::nvValue& handle, const icp::nvValue& slot,
                                           const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpcom_setpwmsynchannel(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& channel, const icp::nvValue& sync);
ICP_EXPORT icp::nvValue icpcom_getpwmsynchannel(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpcom_syncpwmstart(const icp::nvValue& handle, const icp::nvValue& slot,
                                            const icp::nvValue& start);
ICP_EXPORT icp::nvValue icpcom_savepwmconfig(const icp::nvValue& handle, const icp::nvValue& slot);
ICP_EXPORT icp::nvValue icpcom_getpwmdiostatus(const icp::nvValue& handle, const icp::nvValue& slot);
ICP_EXPORT icp::nvValue icpcom_setpwmpulsecount(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& channel, const icp::nvValue& count);
ICP_EXPORT icp::nvValue icpcom_getpwmpulsecount(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& channel);
