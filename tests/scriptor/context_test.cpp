#include "Context.h"

#include <QuorScriptor/GlibCallbacks.h>
#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>

namespace {

using quorlua::OwnedText;
using quorlua::ScriptContext;

// The fields in the order that the host's debuggers and dumps know.
static_assert(std::is_standard_layout_v<ScriptContext> && sizeof(OwnedText) == 8 &&
              sizeof(ScriptContext) == 56);
static_assert(offsetof(ScriptContext, material) == 0 && offsetof(ScriptContext, colour) == 8 &&
              offsetof(ScriptContext, functor) == 16 && offsetof(ScriptContext, textStyle) == 24 &&
              offsetof(ScriptContext, thickness) == 32 && offsetof(ScriptContext, lineTypeScale) == 40 &&
              offsetof(ScriptContext, lineType) == 48);

TEST(Context, ResetLeavesTheTextStyleAlone)
{
    int something = 0;
    const auto* style = reinterpret_cast<const GlibTextStyle*>(&something);
    ScriptContext context;
    EXPECT_EQ(context.textStyle, nullptr);
    context.material.set("STEEL");
    context.colour = 7;
    context.functor = reinterpret_cast<const GlibScriptFunctor*>(&something);
    context.textStyle = style;
    context.thickness = 0.5;
    context.lineTypeScale = 3.0;
    context.lineType.set("DASHED");
    context.reset();
    EXPECT_EQ(context.material.get(), nullptr);
    EXPECT_EQ(context.colour, 257);
    EXPECT_EQ(context.functor, nullptr);
    EXPECT_EQ(context.textStyle, style);
    EXPECT_EQ(context.thickness, 0.0);
    EXPECT_EQ(context.lineTypeScale, 1.0);
    EXPECT_EQ(context.lineType.get(), nullptr);
}

TEST(Context, OwnsCopiesOfItsTexts)
{
    char text[] = "DASHED";
    OwnedText owned;
    EXPECT_EQ(owned.get(), nullptr);
    owned.set(text);
    text[0] = 'x';
    EXPECT_STREQ(owned.get(), "DASHED");
    owned.set("");
    EXPECT_STREQ(owned.get(), "");
    owned.set(nullptr);
    EXPECT_EQ(owned.get(), nullptr);
}

} // namespace
