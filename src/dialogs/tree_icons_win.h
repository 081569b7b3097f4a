#pragma once

#include <windows.h>

#include <commctrl.h>

namespace quorvex::dialogs {

inline constexpr int kHeadingIcon = 0;
inline constexpr int kAddressIcon = 1;

// The icons of the results tree, drawn in the system's colours at any size: a map pin for a heading, a house for an
// address.
class TreeIcons {
  public:
    TreeIcons() = default;
    ~TreeIcons();
    TreeIcons(const TreeIcons&) = delete;
    TreeIcons& operator=(const TreeIcons&) = delete;

    void Make(int pixels);
    HIMAGELIST Handle() const { return list_; }

  private:
    HIMAGELIST list_ = nullptr;
};

} // namespace quorvex::dialogs
