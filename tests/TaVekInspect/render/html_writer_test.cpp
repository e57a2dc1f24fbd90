#include "TaVekInspect/render/html_writer.h"

#include <gtest/gtest.h>

namespace {

TEST(HtmlWriter, nestsElements) {
    HtmlWriter html;
    html.open("p", R"(class="x")").element("code", "a").text(" b").close();
    EXPECT_EQ(html.html(), "<p class=\"x\"><code>a</code> b</p>\n");
}

TEST(HtmlWriter, escapesMarkupAndReplacesWhatAPageMustNotHold) {
    HtmlWriter html;
    html.text("<a href=\"x\">'&\x1B\xFF\xC2\x9B\xE2\x80\xAE\t\n");
    EXPECT_EQ(html.html(), "&lt;a href=&quot;x&quot;&gt;&#39;&amp;?\xEF\xBF\xBD??\t\n");
}

}  // namespace
