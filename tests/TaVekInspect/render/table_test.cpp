#include "TaVekInspect/render/table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// The look on a terminal is tested from outside: a test program's output is none.
TEST(Table, separatesByTabsWhereThereIsNoTerminal) {
    Table table({{"Size", Table::Align::right}, {"Name"}});
    table.add({"1", "one"});
    table.add({"23", "t\two"});
    std::ostringstream out;
    table.print(out);
    EXPECT_EQ(out.str(), "1\tone\n23\tt?wo\n");
}

}  // namespace
