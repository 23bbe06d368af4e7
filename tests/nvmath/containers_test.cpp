// Element storage and copies in the host's value library: a store out of
// range never writes, and every copy is a value of its own.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/nvmath/samples.h"

namespace {

using namespace sample;

// A refused store throws and leaves the value as it was.
TEST(NvValueContainers, SetValueAndSetColumnNames) {
    enum class Outcome { Stored, OutOfRange, InvalidArgument };
    using Op = std::function<void(nvValue&)>;
    const nvValue nine = integer(9);
    const auto at = [&](unsigned i) { return Op([=](nvValue& v) { v.setValue(nine, i); }); };
    const auto cell = [&](unsigned r, unsigned c) { return Op([=](nvValue& v) { v.setValue(nine, r, c); }); };
    const Op itself = [](nvValue& v) { v.setValue(v, 0); };
    const Op itself_moved = [](nvValue& v) { v.setValue(std::move(v), 1); };
    const Op self_assigned = [](nvValue& v) {
        nvValue& same = v;
        v = same;
    };
    const auto names = [](std::vector<const char*> list) {
        return Op([=](nvValue& v) {
            std::vector<nvValue> values;
            for (const char* n : list) values.push_back(text(n));
            v.setColumnNames(values);
        });
    };
    const nvValue pair = vector({integer(0), integer(0)});
    const nvValue one_two = vector({integer(1), integer(2)});
    const nvValue square = matrix(2, 2, {integer(0), integer(0), integer(0), integer(0)});
    struct Case {
        const char* what;
        nvValue target;
        Op op;
        Outcome outcome;
        const char* after;
    };
    const Case cases[] = {
        {"vector, one past the end", pair, at(2), Outcome::OutOfRange, "[0, 0]"},
        {"vector, stored into itself", one_two, itself, Outcome::Stored, "[[1, 2], 2]"},
        {"vector, moved into itself", one_two, itself_moved, Outcome::Stored, "[1, [1, 2]]"},
        {"vector, assigned to itself", one_two, self_assigned, Outcome::Stored, "[1, 2]"},
        {"matrix, element index row by row", square, at(2), Outcome::Stored, "[[0, 0], [9, 0]]"},
        {"matrix, row past the end", square, cell(2, 0), Outcome::OutOfRange, "[[0, 0], [0, 0]]"},
        {"matrix, too few names", square, names({"A"}), Outcome::InvalidArgument, "[[0, 0], [0, 0]]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        nvValue v = c.target;
        switch (c.outcome) {
            case Outcome::Stored: EXPECT_NO_THROW(c.op(v)); break;
            case Outcome::OutOfRange: EXPECT_THROW(c.op(v), std::out_of_range); break;
            case Outcome::InvalidArgument: EXPECT_THROW(c.op(v), std::invalid_argument); break;
        }
        EXPECT_EQ(v.repr(), c.after);
    }
}

// Every way of taking a copy gives a value of its own: copies share their
// contents until one is changed, then the change shows in that one only
// (also for a value taken over from a temporary), and the copies outlive
// the original (a shared nested element would show under the address
// sanitizer).
TEST(NvValueContainers, CopiesAreValuesOfTheirOwn) {
    auto original = std::make_unique<nvValue>(
        table({"A", "B"}, 1, {vector({integer(1), text("x")}), text("long enough to need a block")}));
    const std::string printed = original->repr();
    nvValue assigned = integer(1);
    assigned = *original;
    std::vector<nvValue> copies = {nvValue(*original), assigned, vector({*original}).value(0),
                                   matrix(1, 1, {*original}).value(0)};
    copies[0].setValue(integer(7), 0);
    copies[1].setValue(integer(8), 0, 1);
    copies[2].setValue(nvValue(copies[3]), 1);
    copies[3].setColumnNames({text("C"), text("D")});
    EXPECT_EQ(original->repr(), printed);
    original.reset();
    EXPECT_EQ(copies[0].repr(), "{\"A\", \"B\"} [[7, \"long enough to need a block\"]]");
    EXPECT_EQ(copies[1].repr(), "{\"A\", \"B\"} [[[1, \"x\"], 8]]");
    EXPECT_EQ(copies[2].repr(), "{\"A\", \"B\"} [[[1, \"x\"], " + printed + "]]");
    EXPECT_EQ(copies[3].repr(), "{\"C\", \"D\"} [[[1, \"x\"], \"long enough to need a block\"]]");
}

}  // namespace
