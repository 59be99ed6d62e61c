#pragma once

#include "../scriptor/scriptor_fixture.h"

/// What a thread saw of the library, in order.
using Lines = std::vector<std::string>;

/// While one lives, what the library shows on this thread is kept, and messages are translated with the
/// thread's number. Nothing of it is shared, so that it orders no thread behind another.
class Listening {
public:
    explicit Listening(int number);
    ~Listening();
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

    /// What was shown on this thread since its Listening began, without tracebacks.
    const Lines& messages() const { return shown_; }

    static void hear(const char* text, void*);
    static const char* translate(const char* text);

private:
    int number_;
    Lines shown_;
    std::string translated_;
};

/// The host's answers, which differ from number to number.
class NumberedFunctor final : public GlibScriptFunctor {
public:
    explicit NumberedFunctor(int number) : number_(number) {}

    bool getCurrentObjectId(KxDbObjectId& id) const override;
    bool getIsoPoint(int number, KxGePoint3D& point) const override;
    bool getDefaultIsoMat(KxGeMatrix3D& matrix) const override;
    bool getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const override;
    bool getNormalIsoMat4(unsigned short a, unsigned short b, unsigned short c, unsigned short d,
                          KxGeMatrix3D& matrix) const override;
    bool getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& matrix) const override;
    bool getArcIsoMat(unsigned short a, unsigned short b, unsigned short c,
                      KxGeMatrix3D& matrix) const override;
    bool getRefIsoMat(KxGeMatrix3D& matrix, int a, int b) const override;
    void* getCurrentObjectPointer() const override;
    bool getPsView(KxGeVector3D& direction) const override;

private:
    int number_;
};

class NumberedStyle final : public GlibTextStyle {
public:
    explicit NumberedStyle(int number) : number_(number) {}

    double height() const override { return number_ + 2.5; }
    double getlen(const char* text) const override { return getlen_h(text, height()); }
    double getlen_h(const char* text, double height) const override
    {
        return static_cast<double>(std::string(text).size()) * height;
    }
    void setstyle(const char* name) override { name_ = name; }
    double getfactor() const override { return 0.5; }

    std::string name_;

private:
    int number_;
};

extern const char* const componentScript;
extern const char* const layerScript;
extern const char* const projectConfiguration;
extern const char* const systemConfiguration;

/// Draws the component in a state of its own, with everything that a segment may do, right and wrong, in
/// several rounds.
Lines drawing(int number, const ScriptFolder& folder, int rounds);

/// Asks the configuration of the thread's states, in several rounds.
Lines asking(int number, int rounds);
