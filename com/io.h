// Analog and digital points of serial modules, their power-on and safe
// values, and single DI channels and DO channels.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpcom_ai_read(const icp::nvValue& handle, const icp::nvValue& slot,
                                       const icp::nvValue& channel, const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_ao_read(const icp::nvValue& handle, const icp::nvValue& slot,
                                       const icp::nvValue& channel, const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_ao_write(const icp::nvValue& handle, const icp::nvValue& slot,
                                        const icp::nvValue& channel, const icp::nvValue& total,
                                        const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_di_read(const icp::nvValue& handle, const icp::nvValue& slot,
                                       const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_do_read(const icp::nvValue& handle, const icp::nvValue& slot,
                                       const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_do_write(const icp::nvValue& handle, const icp::nvValue& slot,
                                        const icp::nvValue& total, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_do_readpoweronvalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                   const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_do_writepoweronvalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                    const icp::nvValue& total, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_ao_readpoweronvalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                   const icp::nvValue& channel, const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_ao_writepoweronvalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                    const icp::nvValue& channel, const icp::nvValue& total,
                                                    const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_do_readsafevalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_do_writesafevalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                 const icp::nvValue& total, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_ao_readsafevalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                const icp::nvValue& channel, const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_ao_writesafevalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                 const icp::nvValue& channel, const icp::nvValue& total,
                                                 const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpcom_di_readchannel(const icp::nvValue& handle, const icp::nvValue& slot,
                                              const icp::nvValue& channel, const icp::nvValue& total);
ICP_EXPORT icp::nvValue icpcom_do_writechannelvalue(const icp::nvValue& handle, const icp::nvValue& slot,
                                                    const icp::nvValue& channel, const icp::nvValue& total,
                                                    const icp::nvValue& on);
