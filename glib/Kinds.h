#pragma once

#include "Context.h"
#include "DrawingKinds.h"
#include "SolidKinds.h"

#include <QuorPrimary/QuorOprPrimary.h>
#include <memory>

/// The table of kinds, whole: what a record's code can mean. The parser expands it; whoever wants to say what
/// a record should look like reads its rows.
namespace quorlua::glib {

inline QuorOprPrimary* makeOperation(int operation, int mainElement, const OperandOrPlane& operand)
{
    if (operation == QuorOprPrimary::Slice)
        return createQuorPrimarySliceOpr(mainElement, operand.point, operand.direction);
    return createQuorPrimaryBooleanOpr(operation, mainElement, operand.element);
}

inline QuorOprKVParamArray* makeParameters(const std::vector<KVParams>& parameters)
{
    auto made = std::make_unique<QuorOprKVParamArray>();
    made->setParams(parameters);
    return made.release();
}

// clang-format off
inline constexpr auto operationKinds = std::tuple(
    kind(41, "boolean or slice operation", exactly(4, messages::booleanLength.text()),
         fields(I("operation", messages::booleanOperation.text()), I("mainElement", messages::booleanMain.text()),
                required<OperandField>("otherElementOrPlane")),
         "createQuorPrimaryBooleanOpr(I2, I3, I4); operation 4: createQuorPrimarySliceOpr(I3, P, V) of the plane", "",
         [](int operation, int mainElement, auto& operand) { return makeOperation(operation, mainElement, operand); }),
    kind(200, "parameter record", exactly(2), fields(required<ParametersField>("parameters")),
         "QuorOprKVParamArray()", "setParams(parameters)",
         [](auto& parameters) { return makeParameters(parameters); }));
// clang-format on

/// Every kind that makes a primitive.
inline constexpr auto primitiveKinds =
    std::tuple_cat(solidKinds, drawingKinds, std::tuple(hatchKind), operationKinds);

/// A row of a record that changes a current drawing attribute. `apply` gives it the field's value, or resets
/// it for a record without one.
template<class Fields, class Apply>
struct AttributeKind {
    int code;
    const char* name;
    Fields fields;
    const char* effect;
    Apply apply;
};
template<class Field, class Apply>
constexpr AttributeKind<std::tuple<Field>, Apply> attribute(int code, const char* name, Field field,
                                                            const char* effect, Apply apply)
{
    return {code, name, {field}, effect, apply};
}

// clang-format off
inline constexpr auto attributeKinds = std::tuple(
    attribute(300, "set colour", opt(I("colour")), "the colour of what follows; without a value 257",
              [](ScriptContext& context, auto& colour) {
                  context.colour = colour ? static_cast<short>(colour.value) : ScriptContext::defaultColour;
              }),
    attribute(400, "set material", opt(S("material")), "the material of what follows; without a value none",
              [](ScriptContext& context, auto& name) { context.material.set(name.value); }),
    attribute(500, "set thickness", opt(N("thickness")), "the thickness of what follows; without a value 0.0",
              [](ScriptContext& context, auto& thickness) { context.thickness = thickness.value; }),
    attribute(600, "set line type", opt(S("lineType")), "the line type of what follows; without a value none",
              [](ScriptContext& context, auto& name) { context.lineType.set(name.value); }),
    // Without a value not 1.0, as in a new context: such a record takes the scale of what follows away.
    attribute(700, "set line-type scale", opt(N("ltScale")), "the line-type scale of what follows; without a value 0.0",
              [](ScriptContext& context, auto& scale) { context.lineTypeScale = scale.value; }));
// clang-format on

/// The row of a record whose records are taken as if they stood in its place.
struct GroupKind {
    int code;
    const char* name;
    Length length;
    std::tuple<Required<RecordsField>> fields;
    const char* effect;
};
inline constexpr GroupKind groupKind = {40,
                                        "group",
                                        atLeast(2),
                                        {required<RecordsField>("records")},
                                        "its records are taken as if they stood in its place"};

} // namespace quorlua::glib
