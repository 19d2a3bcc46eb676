// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/schema_cost.h"

#include "xml/dom/libxml.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::dom {
namespace {

// Far above any schema that is written for one kind of file.
constexpr std::int64_t kMostParts = 200; ///< of one content model
constexpr std::int64_t kMostWork = 10 * kMostParts * kMostParts * kMostParts;
constexpr int kDeepest = 64;    ///< elements in one another, by way of what they name too
constexpr int kMostCounted = 2; ///< groups with a count around an element

/// What a definition comes to with all that it names; a pattern's characters are parts as well.
struct Cost {
    std::int64_t parts = 0;
    int counted = 0; ///< groups around one another that may come so and so often

    void Add(const Cost& other) {
        parts = std::min(parts + other.parts, kMostParts + 1);
        counted = std::max(counted, other.counted);
    }
};
constexpr Cost kTooMuch = {kMostParts + 1, kMostCounted + 1};

/// Kinds of definitions, by the element that makes them and those that name them.
enum class Kind { None, Group, Attributes, Type };

constexpr std::pair<std::string_view, Kind> kDefinitions[] = {{"group", Kind::Group},
                                                              {"attributeGroup", Kind::Attributes},
                                                              {"complexType", Kind::Type},
                                                              {"simpleType", Kind::Type}};

struct Use {
    std::string_view element;
    const char* attribute; ///< holds names, separated by blanks
    Kind kind;
};
constexpr Use kUses[] = {{"group", "ref", Kind::Group},
                         {"attributeGroup", "ref", Kind::Attributes},
                         {"extension", "base", Kind::Type},
                         {"restriction", "base", Kind::Type},
                         {"union", "memberTypes", Kind::Type}};

Kind KindOf(const xmlNode& node) {
    const auto* const row =
        std::find_if(std::begin(kDefinitions), std::end(kDefinitions),
                     [&](const auto& each) { return each.first == View(node.name); });
    return row != std::end(kDefinitions) ? row->second : Kind::None;
}

template <class Visit>
void ForEachChild(const xmlNode& node, Visit visit) {
    for (const xmlNode* child = node.children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            visit(*child);
        }
    }
}

/// The names in a list, without their prefixes.
template <class Visit>
void ForEachName(std::string_view list, Visit visit) {
    constexpr std::string_view kBlanks = " \t\r\n";
    while (true) {
        list.remove_prefix(std::min(list.find_first_not_of(kBlanks), list.size()));
        if (list.empty()) {
            return;
        }
        const std::string_view name = list.substr(0, list.find_first_of(kBlanks));
        visit(name.substr(name.find(':') + 1));
        list.remove_prefix(name.size());
    }
}

/// Of the element alone. What may be repeated makes many more ways through a model.
std::int64_t PartsOf(const xmlNode& node) {
    constexpr std::int64_t kRepeated = 4;
    if (View(node.name) == "pattern") {
        return std::ssize(Attribute(node, "value"));
    }
    const std::string most = Attribute(node, "maxOccurs");
    return most.empty() || most == "1" ? 1 : kRepeated;
}

/// The library tries every way in which the elements of a document can make up the count.
bool IsCountedGroup(const xmlNode& node) {
    const std::string most = Attribute(node, "maxOccurs");
    return View(node.name) != "element" && !most.empty() && most != "1" && most != "unbounded";
}

class SchemaCost {
public:
    explicit SchemaCost(const xmlNode& root) {
        ForEachChild(root, [&](const xmlNode& node) {
            const std::string name = Attribute(node, "name");
            if (KindOf(node) != Kind::None) {
                m_definitions[{KindOf(node), name}].node = &node;
            }
            m_substitutes += xmlHasProp(&node, BAD_CAST "substitutionGroup") != nullptr ? 1 : 0;
        });
    }

    /// Whether all content models and types, wherever they are, can be compiled. The library
    /// takes time by the third power of a model's size, and goes as deep as the schema does.
    bool IsAffordable(const xmlNode& root) {
        m_work = 0;
        Count({m_substitutes, 0});
        return EveryElement(root, [&](const xmlNode& node, int depth) {
            if (KindOf(node) != Kind::None) {
                Count(CostOf(node, 0));
            }
            return depth <= kDeepest && m_work <= kMostWork;
        });
    }

private:
    void Count(const Cost& cost) {
        const bool bounded = cost.parts <= kMostParts && cost.counted <= kMostCounted;
        m_work += bounded ? cost.parts * cost.parts * cost.parts : kMostWork + 1;
    }

    struct Definition {
        const xmlNode* node = nullptr;
        Cost cost = kTooMuch; ///< until it is known: a definition that names itself
        bool met = false;
    };

    // What goes on from here, to children or to what is named, is one deeper each time.
    Cost CostOf(const xmlNode& node, int depth) {
        if (depth > kDeepest) {
            return kTooMuch;
        }
        Cost cost = {PartsOf(node), 0};
        for (const Use& use : kUses) {
            if (use.element == View(node.name)) {
                ForEachName(Attribute(node, use.attribute), [&](std::string_view name) {
                    cost.Add(CostOfDefinition({use.kind, std::string(name)}, depth + 1));
                });
            }
        }
        if (View(node.name) == "element") {
            cost.Add({m_substitutes, 0}); // what it holds is a model of its own
            return cost;
        }
        ForEachChild(node, [&](const xmlNode& child) { cost.Add(CostOf(child, depth + 1)); });
        cost.counted += IsCountedGroup(node) ? 1 : 0;
        return cost;
    }

    Cost CostOfDefinition(const std::pair<Kind, std::string>& name, int depth) {
        const auto found = m_definitions.find(name);
        if (found == m_definitions.end()) {
            return {}; // a type that every schema has, or a fault of its own
        }
        Definition& definition = found->second;
        if (!definition.met) {
            definition.met = true;
            definition.cost = CostOf(*definition.node, depth);
        }
        return definition.cost;
    }

    std::map<std::pair<Kind, std::string>, Definition> m_definitions;
    std::int64_t m_substitutes = 0;
    std::int64_t m_work = 0;
};

} // namespace

bool IsAffordable(const xmlDoc& schema) {
    const xmlNode* const root = xmlDocGetRootElement(&schema);
    return root == nullptr || SchemaCost(*root).IsAffordable(*root);
}

} // namespace nqp2::dom
