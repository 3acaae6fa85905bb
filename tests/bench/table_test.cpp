// The table of the benchmarks, on which it hangs whether a missed bound is noticed.
#include <gtest/gtest.h>

#include <cmath>

#include "table.h"

namespace {

int statusAfter(void (*rows)(bench::Table&)) {
    char name[] = "bench";
    char* arguments[] = {name, nullptr};
    int count = 1;
    bench::Table table("bench", count, arguments);
    rows(table);
    return table.status();
}

TEST(BenchTable, FailsWhereAnyBoundIsMissed) {
    EXPECT_EQ(statusAfter([](bench::Table& table) {
                  table.value("without a bound", 1e9, "ms");
                  table.value("at its bound", 5, "ms", 5);
                  table.ratio("at its bound", 30, 20, "ms", 1.5);
                  table.ratio("without a bound", 30, 1, "ms");
              }),
              0);
    EXPECT_EQ(statusAfter([](bench::Table& table) {
                  table.value("beyond", 5.01, "ms", 5);
                  table.value("within", 1, "ms", 5);
              }),
              1);
    EXPECT_EQ(statusAfter([](bench::Table& table) { table.ratio("beyond", 31, 20, "ms", 1.5); }),
              1);
    // What was not measured has not held its bound.
    EXPECT_EQ(statusAfter([](bench::Table& table) { table.value("none", NAN, "ms", 5); }), 1);
    EXPECT_EQ(statusAfter([](bench::Table& table) { table.ratio("none", 1, 0, "ms", 5); }), 1);
}

TEST(BenchTable, PrintsAnObjectForEachRow) {
    char name[] = "bench", json[] = "--json", other[] = "grid";
    char* arguments[] = {name, json, other, nullptr};
    int count = 3;
    bench::Table table("bench", count, arguments);
    EXPECT_EQ(count, 2);
    EXPECT_STREQ(arguments[1], "grid");
    testing::internal::CaptureStdout();
    table.ratio("a \"row\"", 3, 2, "ms", 1.25);
    table.value("alone", 7, "MB");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "{\"program\":\"bench\",\"name\":\"a \\\"row\\\"\",\"value\":3,\"measure\":2,"
              "\"ratio\":1.5,\"unit\":\"ms\",\"bound\":1.25,\"held\":false}\n"
              "{\"program\":\"bench\",\"name\":\"alone\",\"value\":7,\"measure\":null,"
              "\"ratio\":null,\"unit\":\"MB\",\"bound\":null,\"held\":true}\n");
}

}  // namespace
