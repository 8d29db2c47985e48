#include "field_paths.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace imgtune::python {

namespace {

using workbench::FieldRef;
using workbench::fields;
using workbench::Record;
using FieldList = std::vector<const FieldRef*>;

/// The path of the list that a value is an element of; its own where it is none.
std::string list_path(const FieldRef& field) {
    if (field.record->definition->as_list) return field.record->path;
    std::string path = field.path();
    if (field.definition->count != 0) path.erase(path.rfind('['));
    return path;
}

/// Values and one-dimensional arrays by their path, in the order of the tuning.
struct Index {
    std::map<std::string, const FieldRef*, std::less<>> values;
    std::map<std::string, FieldList, std::less<>> lists;
    std::vector<std::string> order;
};

const Index& index() {
    static const Index all = [] {
        Index made;
        for (const FieldRef& field : fields()) {
            made.values[field.path()] = &field;
            const std::string path = list_path(field);
            FieldList& list = made.lists[path];
            if (list.empty()) made.order.push_back(path);
            list.push_back(&field);
        }
        return made;
    }();
    return all;
}

bool is_single(const FieldList& list) {
    return list.size() == 1 && list.front()->definition->count == 0 &&
           !list.front()->record->definition->as_list;
}

/// The lists right below `prefix`, by the next name of their path.
std::vector<std::pair<std::string, std::string>> members_below(const std::string& prefix) {
    std::vector<std::pair<std::string, std::string>> found;
    for (const std::string& path : index().order) {
        if (path.size() <= prefix.size() || path.compare(0, prefix.size(), prefix) != 0) continue;
        const std::string_view rest = std::string_view(path).substr(prefix.size());
        const std::string name(rest.substr(0, rest.find('.')));
        if (found.empty() || found.back().first != name) found.emplace_back(name, path);
    }
    return found;
}

/// Rows of one kind, such as all gains of an LV row, as an array of two dimensions.
bool stack(const std::string& prefix,
           const std::vector<std::pair<std::string, std::string>>& members, Selection& selection) {
    const workbench::RecordDefinition* kind = nullptr;
    for (const auto& [name, path] : members) {
        if (path != prefix + name) return false;
        const FieldList& list = index().lists.at(path);
        const auto* const definition = list.front()->record->definition;
        if (!definition->as_list || (kind != nullptr && definition != kind)) return false;
        kind = definition;
        selection.values.insert(selection.values.end(), list.begin(), list.end());
    }
    selection.kind = Selection::Kind::array;
    selection.shape = {members.size(), selection.values.size() / members.size()};
    return true;
}

/// The points of an LV row by what they hold: "ccm.rows.normal.gains" is every point's gain,
/// "ccm.rows.normal.gains.2" that of point 2. False for any other path.
bool select_across_points(const std::string& path, Selection& selection) {
    for (const auto& [plural, single] : {std::pair{".gains", ".gain"}, {".matrices", ".matrix"}}) {
        const std::size_t at = path.find(plural);
        if (path.compare(0, 9, "ccm.rows.") != 0 || at == std::string::npos) continue;
        const std::string row = path.substr(0, at);
        const std::string rest = path.substr(at + std::string_view(plural).size());
        if (!rest.empty()) {
            const std::size_t end = std::min(rest.find('.', 1), rest.size());
            selection = select(row + rest.substr(0, end) + single + rest.substr(end));
            return true;
        }
        for (std::size_t point = 0;; ++point) {
            const auto list = index().lists.find(row + '.' + std::to_string(point) + single);
            if (list == index().lists.end()) break;
            selection.values.insert(selection.values.end(), list->second.begin(),
                                    list->second.end());
            selection.shape = {point + 1, list->second.size()};
        }
        if (!selection.values.empty()) selection.kind = Selection::Kind::array;
        return true;
    }
    return false;
}

}  // namespace

Selection select(const std::string& path) {
    Selection selection;
    if (select_across_points(path, selection)) return selection;
    const Index& all = index();
    if (const auto list = all.lists.find(path); list != all.lists.end()) {
        selection.kind = is_single(list->second) ? Selection::Kind::value : Selection::Kind::array;
        selection.values = list->second;
        selection.shape = {list->second.size()};
        return selection;
    }
    if (const auto value = all.values.find(path); value != all.values.end()) {
        selection.kind = Selection::Kind::value;
        selection.values = {value->second};
        return selection;
    }
    const std::string prefix = path.empty() ? path : path + '.';
    const auto members = members_below(prefix);
    if (members.empty() || stack(prefix, members, selection)) return selection;
    selection.values.clear();
    selection.kind = Selection::Kind::group;
    for (const auto& [name, first] : members) {
        const auto same = [&name = name](const std::string& known) { return known == name; };
        if (std::none_of(selection.members.begin(), selection.members.end(), same)) {
            selection.members.push_back(name);
        }
    }
    return selection;
}

const std::vector<std::string>& field_paths() {
    return index().order;
}

}  // namespace imgtune::python
