#ifndef QZXMLDOCTYPE_H
#define QZXMLDOCTYPE_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// What a document type declaration's internal subset declares that reading needs: general
/// and parameter entities, and the attributes declared for each element with their types and
/// defaults. The first declaration of a name binds; later ones are ignored.
class QzXmlDoctype {
public:
    struct Entity {
        std::string name;
        std::string replacement;  ///< an internal entity's replacement text
        bool external = false;    ///< declared with SYSTEM or PUBLIC: never read
        bool unparsed = false;    ///< declared with NDATA
    };

    struct Attribute {
        std::string name;         ///< qualified name, as declared
        std::string value;        ///< the default, normalised; empty without one
        bool hasDefault = false;  ///< a default or #FIXED value, not #IMPLIED or #REQUIRED
        bool tokenized = false;   ///< of a type other than CDATA: values are normalised further
    };

    /// Declares a general (or, with parameter, a parameter) entity unless one of that name
    /// exists; whether it did.
    bool declare(Entity entity, bool parameter);
    /// The general or parameter entity of that name, or null.
    const Entity* find(std::string_view name, bool parameter) const;
    /// Declares an attribute of element unless element has one of that name already.
    void declare(std::string_view element, Attribute attribute);
    /// The attributes declared for element, or null.
    const std::vector<Attribute>* attributes(std::string_view element) const;

private:
    std::unordered_map<std::string, Entity> general_;
    std::unordered_map<std::string, Entity> parameter_;
    std::unordered_map<std::string, std::vector<Attribute>> attributes_;
};

#endif
