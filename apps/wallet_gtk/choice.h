#pragma once

#include <adwaita.h>

#include <functional>
#include <string>
#include <vector>

namespace kavio::wallet_gtk {

/// Has the combo row offer these, the first one chosen.
inline void offer(AdwComboRow* row, const std::vector<std::string>& names) {
    auto* const list = gtk_string_list_new(nullptr);
    for (const auto& name : names) gtk_string_list_append(list, name.c_str());
    adw_combo_row_set_model(row, G_LIST_MODEL(list));
    g_object_unref(list);
}

/// What is chosen of what was offered; null if nothing was.
template <class T>
T chosen(AdwComboRow* row, const std::vector<T>& offered) {
    const auto index = adw_combo_row_get_selected(row);
    return index < offered.size() ? offered[index] : T{};
}

}  // namespace kavio::wallet_gtk
