#include "TaVekInspect/render/json_writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(JsonWriter, nestsAndIndents) {
    std::ostringstream out;
    JsonWriter json(out);
    json.object().value("a", "x").value("n", std::uint64_t{18446744073709551615u}).value("b", true);
    json.array("list").item("one").item("two").end().array("none").end().object("o").end();
    json.array("objects").object().value("k", false).end().end().end();
    EXPECT_EQ(out.str(), R"({
  "a": "x",
  "n": 18446744073709551615,
  "b": true,
  "list": [
    "one",
    "two"
  ],
  "none": [],
  "o": {},
  "objects": [
    {
      "k": false
    }
  ]
}
)");
}

TEST(JsonWriter, escapesWhatJsonDoesNotAllow) {
    std::ostringstream out;
    JsonWriter(out).object().value("\"", std::string_view("\\\"\n\x01\0é\xFF", 8)).end();
    EXPECT_EQ(out.str(), "{\n  \"\\\"\": \"\\\\\\\"\\u000a\\u0001\\u0000é\xEF\xBF\xBD\"\n}\n");
}

}  // namespace
