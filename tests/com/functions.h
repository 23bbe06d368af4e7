// The serial module I/O and watchdog functions as rows of one table, each
// with arguments that work on the default rig, for the tests that go across
// all of them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "com/io.h"
#include "com/watchdog.h"
#include "tests/com/serial_fixture.h"

namespace com_test {

using Args = std::vector<nvValue>;  // after the handle
using Body = std::function<nvValue(const nvValue& handle, const Args&)>;

template <class... A, std::size_t... I>
nvValue call_with(nvValue (*f)(const nvValue&, A...), const nvValue& handle, const Args& args,
                  std::index_sequence<I...>) {
    return f(handle, args.at(I)...);
}

template <class... A>
Body body_of(nvValue (*f)(const nvValue&, A...)) {
    return [f](const nvValue& handle, const Args& args) {
        return call_with(f, handle, args, std::index_sequence_for<A...>{});
    };
}

inline nvValue real(double x) { return icp::make::real(x); }
inline nvValue boolean(bool b) { return icp::make::boolean(b); }

struct Function {
    const char* name;
    Body body;
    Args args;  // slot first
};

// Analog output module at 2 (4 channels), digital I/O at 3 (7 outputs, 8
// inputs), analog input at 1 (8 channels).
inline const std::vector<Function>& functions() {
    static const std::vector<Function> all = {
        {"AI_Read", body_of(icpcom_ai_read), {integer(1), integer(2), integer(8)}},
        {"AO_Read", body_of(icpcom_ao_read), {integer(2), integer(0), integer(4)}},
        {"AO_Write", body_of(icpcom_ao_write), {integer(2), integer(0), integer(4), real(2.5)}},
        {"DI_Read", body_of(icpcom_di_read), {integer(3), integer(8)}},
        {"DO_Read", body_of(icpcom_do_read), {integer(3), integer(7)}},
        {"DO_Write", body_of(icpcom_do_write), {integer(3), integer(7), integer(5)}},
        {"DO_ReadPowerOnValue", body_of(icpcom_do_readpoweronvalue), {integer(3), integer(7)}},
        {"DO_WritePowerOnValue", body_of(icpcom_do_writepoweronvalue), {integer(3), integer(7), integer(3)}},
        {"AO_ReadPowerOnValue", body_of(icpcom_ao_readpoweronvalue), {integer(2), integer(1), integer(4)}},
        {"AO_WritePowerOnValue", body_of(icpcom_ao_writepoweronvalue),
         {integer(2), integer(1), integer(4), integer(3)}},
        {"DO_ReadSafeValue", body_of(icpcom_do_readsafevalue), {integer(3), integer(7)}},
        {"DO_WriteSafeValue", body_of(icpcom_do_writesafevalue), {integer(3), integer(7), integer(64)}},
        {"AO_ReadSafeValue", body_of(icpcom_ao_readsafevalue), {integer(2), integer(1), integer(4)}},
        {"AO_WriteSafeValue", body_of(icpcom_ao_writesafevalue), {integer(2), integer(1), integer(4), integer(1)}},
        {"DI_ReadChannel", body_of(icpcom_di_readchannel), {integer(3), integer(0), integer(8)}},
        {"DO_WriteChannel", body_of(icpcom_do_writechannelvalue),
         {integer(3), integer(1), integer(7), integer(1)}},
        {"GetWDTStatus", body_of(icpcom_getwdtstatus), {integer(3)}},
        {"GetWDTConfig", body_of(icpcom_getwdtconfig), {integer(3)}},
        {"SetWDTConfig", body_of(icpcom_setwdtconfig), {integer(3), integer(1), integer(5), integer(0)}},
        {"ResetWDT", body_of(icpcom_resetwdt), {integer(3)}},
        {"RefreshWDT", body_of(icpcom_refreshwdt), {integer(3)}},
    };
    return all;
}

}  // namespace com_test
