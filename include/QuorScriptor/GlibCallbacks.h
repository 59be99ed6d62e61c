#pragma once

#include <BaseObj/KxDbObjectId.h>
#include <KxGeBasic/KxGeMatrix3D.h>
#include <KxGeBasic/KxGePoint3D.h>

struct lua_State;

/// The three classes that a host implements for its scripts. The library never owns an object of them: each
/// must outlive the scriptor or thread it is given to. Their virtual operations are called in the order of
/// their slots, so the order of the declarations is part of the interface, and no slot stands before them. An
/// exception that derives from `std::exception` ends at the call into the host; the host should throw none.

/// Answers what only the host knows about the drawing in work. Every operation that fills a reference returns
/// true when it did, and false, the reference then being ignored, when it has no answer.
class GlibScriptFunctor {
public:
    virtual bool getCurrentObjectId(KxDbObjectId& id) const = 0;
    virtual bool getIsoPoint(int number, KxGePoint3D& point) const = 0;
    virtual bool getDefaultIsoMat(KxGeMatrix3D& matrix) const = 0;
    virtual bool getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const = 0;
    virtual bool getNormalIsoMat4(unsigned short a, unsigned short b, unsigned short c, unsigned short d,
                                  KxGeMatrix3D& matrix) const = 0;
    virtual bool getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& matrix) const = 0;
    virtual bool getArcIsoMat(unsigned short a, unsigned short b, unsigned short c,
                              KxGeMatrix3D& matrix) const = 0;
    virtual bool getRefIsoMat(KxGeMatrix3D& matrix, int a, int b) const = 0;
    /// The object in work as an opaque pointer, null when there is none.
    virtual void* getCurrentObjectPointer() const = 0;
    virtual bool getPsView(KxGeVector3D& direction) const = 0;

protected:
    ~GlibScriptFunctor() = default;
};

/// The text style that scripts see as an object of the class "GlibTextStyle". Texts are NUL-terminated bytes
/// in the host's code page; lengths and heights are in drawing units.
class GlibTextStyle {
public:
    /// The height of a text in this style.
    virtual double height() const = 0;
    /// The length of a text in this style's own height.
    virtual double getlen(const char* text) const = 0;
    /// The length of a text in a given height.
    virtual double getlen_h(const char* text, double height) const = 0;
    /// Changes to the style of that name; an unknown name is the host's affair.
    virtual void setstyle(const char* name) = 0;
    /// The ratio of a character's width to its height.
    virtual double getfactor() const = 0;

protected:
    ~GlibTextStyle() = default;
};

/// Called with the scriptor's Lua state each time a script was loaded and run without an error. It runs
/// outside any protected call: what it does with the state must raise no Lua error.
class FunctionRightAfterLoadFile {
public:
    virtual void loaded(lua_State* L) = 0;

protected:
    ~FunctionRightAfterLoadFile() = default;
};
