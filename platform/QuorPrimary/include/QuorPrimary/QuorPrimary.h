#pragma once

/// The drawing primitives of the host: what every primitive is, and the attributes that each class of them
/// takes. Primitives are made by the factories (QuorPrimaryFactories.h) and belong to whoever called the
/// factory, who deletes them through any of their classes. A primitive keeps copies of all that it is given.
///
/// Setters keep what they are given and check nothing; only exhausted memory makes one throw
/// (`std::bad_alloc`, the primitive unchanged). Getters never fail. Texts that a getter returns belong to the
/// primitive and live until the same attribute is set again or the primitive is deleted. An object is used by
/// one thread at a time; different objects are independent of each other.

#include <KxGeBasic/KxGePoint3D.h>
#include <QuorPrimary/Export.h>
#include <iosfwd>
#include <optional>
#include <string>

class PrimaryAttributeVisitor;
class PrimaryVisitor;
class QuorPrimary2D;
class QuorPrimary3D;
class QuorPrimaryText;

/// The classes that a primitive can be told apart by.
enum class PrimaryKind : unsigned char {
    Plain,     ///< a `QuorPrimary` and no more: a reference to a drawing
    Solid,     ///< a `QuorPrimary3D`
    Drawing,   ///< a `QuorPrimary2D` that is no text
    Text,      ///< a `QuorPrimaryText`
    Operation, ///< a `QuorOprPrimary`
    Parameters ///< a `QuorOprKVParamArray`
};

/// What all primitives have in common: the factory that made them, that factory's arguments, and a colour.
class QUORPRIMARY_API QuorPrimary {
public:
    virtual ~QuorPrimary();
    QuorPrimary(const QuorPrimary&) = delete;
    QuorPrimary& operator=(const QuorPrimary&) = delete;

    /// The name of the factory ("createQuorLine"); the text lives as long as the library.
    const char* factoryName() const { return factory_; }

    /// Hands the factory's arguments, all of them, to the visitor in the factory's order.
    virtual void visitArguments(PrimaryVisitor& visitor) const = 0;

    /// Hands the attributes to the visitor. Those that every primitive of a class has come always, null while
    /// unset: color; for solids then material; for drawings and texts then thick, ltScale, lineType. The
    /// others come after them and only when they are set: gsFlag; scale, height, normal, txtFlag. Operations
    /// and parameter arrays have none.
    virtual void visitAttributes(PrimaryAttributeVisitor& visitor) const;

    /// Writes the factory, its arguments in brackets and the attributes on one line without a line feed, such
    /// as `createQuorLine((0, 0, 0), (1, 0, 0)) color=3 thick=0.7 ltScale=null lineType="DASHED"`. Numbers
    /// read back exactly; settings of the stream play no part.
    void print(std::ostream& out) const;

    PrimaryKind kind() const { return kind_; }

    /// This primitive as one of its class, or null when it is none. A text is a drawing, too.
    inline QuorPrimary3D* toPrimary3D();
    inline QuorPrimary2D* toPrimary2D();
    inline QuorPrimaryText* toPrimaryText();
    inline const QuorPrimary3D* toPrimary3D() const;
    inline const QuorPrimary2D* toPrimary2D() const;
    inline const QuorPrimaryText* toPrimaryText() const;

    /// The colour's number; 257 stands for the drawing's own colour and is what an unset colour reads as.
    void setColor(short color) { color_ = color; }
    bool hasColor() const { return color_.has_value(); }
    short getColor() const { return color_.value_or(257); }

protected:
    /// `factory` is a text that lives as long as the library. Only the class of that kind passes another
    /// `kind`.
    explicit QuorPrimary(const char* factory, PrimaryKind kind = PrimaryKind::Plain)
        : factory_(factory), kind_(kind)
    {
    }

private:
    const char* factory_;
    PrimaryKind kind_;
    std::optional<short> color_;
};

/// The same as `print`.
QUORPRIMARY_API std::ostream& operator<<(std::ostream& out, const QuorPrimary& primary);

/// A body, or a polyline in space.
class QUORPRIMARY_API QuorPrimary3D : public QuorPrimary {
public:
    ~QuorPrimary3D() override;
    void visitAttributes(PrimaryAttributeVisitor& visitor) const override;

    /// The material's name, copied; null unsets it. Reads as null while unset.
    void setMaterial(const char* material);
    bool hasMaterial() const { return material_.has_value(); }
    const char* getMaterial() const { return material_ ? material_->c_str() : nullptr; }

    /// How the faces at the body's ends are shown: 0 both, 1 the start's only, 2 none, as where a pipe goes
    /// on in its neighbour. Reads as 0 while unset.
    void setGSFlag(int flag) { gsFlag_ = flag; }
    bool hasGSFlag() const { return gsFlag_.has_value(); }
    int getGSFlag() const { return gsFlag_.value_or(0); }

protected:
    explicit QuorPrimary3D(const char* factory) : QuorPrimary(factory, PrimaryKind::Solid) {}

private:
    std::optional<int> gsFlag_;
    std::optional<std::string> material_;
};

/// A drawing in lines. It has no thickness, scale or line type of its own until one is set; the getters then
/// answer 0.0, 1.0 and null, the values that stand for "as the drawing has it".
class QUORPRIMARY_API QuorPrimary2D : public QuorPrimary {
public:
    ~QuorPrimary2D() override;
    void visitAttributes(PrimaryAttributeVisitor& visitor) const override;

    /// Thickness of the line, in drawing units. 0.0 while unset.
    void setThick(double thick) { thick_ = thick; }
    bool hasThick() const { return thick_.has_value(); }
    double getThick() const { return thick_.value_or(0.0); }

    /// Scale of the line type's pattern. 1.0 while unset.
    void setLTScale(double scale) { ltScale_ = scale; }
    bool hasLTScale() const { return ltScale_.has_value(); }
    double getLTScale() const { return ltScale_.value_or(1.0); }

    /// The line type's name, copied; null unsets it. Reads as null while unset.
    void setLineType(const char* lineType);
    bool hasLineType() const { return lineType_.has_value(); }
    const char* getLineType() const { return lineType_ ? lineType_->c_str() : nullptr; }

protected:
    explicit QuorPrimary2D(const char* factory, PrimaryKind kind = PrimaryKind::Drawing)
        : QuorPrimary(factory, kind)
    {
    }

private:
    std::optional<double> thick_;
    std::optional<double> ltScale_;
    std::optional<std::string> lineType_;
};

/// A line of lettering. What is not set follows the drawing's text style.
class QUORPRIMARY_API QuorPrimaryText : public QuorPrimary2D {
public:
    ~QuorPrimaryText() override;
    void visitAttributes(PrimaryAttributeVisitor& visitor) const override;

    /// Width of the letters as a multiple of their usual width. 1.0 while unset.
    void setScale(double scale) { scale_ = scale; }
    bool hasScale() const { return scale_.has_value(); }
    double getScale() const { return scale_.value_or(1.0); }

    /// Height of the letters in drawing units. 0.0, the style's height, while unset.
    void setHeight(double height) { height_ = height; }
    bool hasHeight() const { return height_.has_value(); }
    double getHeight() const { return height_.value_or(0.0); }

    /// The direction that the text is read from. (0, 0, 1) while unset.
    void setNormal(const KxGeVector3D& normal) { normal_ = normal; }
    bool hasNormal() const { return normal_.has_value(); }
    KxGeVector3D getNormal() const { return normal_.value_or(KxGeVector3D(0, 0, 1)); }

    /// A number that the application gives a meaning to. 0 while unset.
    void setTxtFlag(int flag) { txtFlag_ = flag; }
    bool hasTxtFlag() const { return txtFlag_.has_value(); }
    int getTxtFlag() const { return txtFlag_.value_or(0); }

protected:
    explicit QuorPrimaryText(const char* factory) : QuorPrimary2D(factory, PrimaryKind::Text) {}

private:
    std::optional<double> scale_;
    std::optional<double> height_;
    std::optional<KxGeVector3D> normal_;
    std::optional<int> txtFlag_;
};

QuorPrimary3D* QuorPrimary::toPrimary3D()
{
    return kind_ == PrimaryKind::Solid ? static_cast<QuorPrimary3D*>(this) : nullptr;
}

QuorPrimary2D* QuorPrimary::toPrimary2D()
{
    const bool drawn = kind_ == PrimaryKind::Drawing || kind_ == PrimaryKind::Text;
    return drawn ? static_cast<QuorPrimary2D*>(this) : nullptr;
}

QuorPrimaryText* QuorPrimary::toPrimaryText()
{
    return kind_ == PrimaryKind::Text ? static_cast<QuorPrimaryText*>(this) : nullptr;
}

const QuorPrimary3D* QuorPrimary::toPrimary3D() const
{
    return const_cast<QuorPrimary*>(this)->toPrimary3D();
}

const QuorPrimary2D* QuorPrimary::toPrimary2D() const
{
    return const_cast<QuorPrimary*>(this)->toPrimary2D();
}

const QuorPrimaryText* QuorPrimary::toPrimaryText() const
{
    return const_cast<QuorPrimary*>(this)->toPrimaryText();
}
