// Help records are built afresh at every call (tests/help compares each
// name and record with records.json, which also keeps names unique).
#include <gtest/gtest.h>

#include "plugin/catalogue.h"

namespace {

TEST(Catalogue, RecordsAreBuiltAfresh) {
    for (const icp::Function* f : icp::catalogue()) {
        const icp::nvValue record = f->description();
        EXPECT_EQ(f->description().repr(), record.repr()) << f->export_name;
    }
}

}  // namespace
