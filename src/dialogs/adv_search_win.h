#pragma once

#include "dialogs/address_controls_win.h"
#include "dialogs/lookup_lists.h"
#include "dialogs/result_tree.h"
#include "lookups/criteria.h"

#include <string>
#include <vector>

namespace quorvex::dialogs {

class frmAddress;

// The controller of the advanced view: checks the criteria as they are typed, runs the search, shows its results as a
// tree and fetches the record that the user picks. It works on the dialog's controls, which it is given when the dialog
// loads.
class AdvSearch {
  public:
    AdvSearch(object::Quorvex& object, frmAddress& dialog) : object_(object), dialog_(dialog), lists_(object) {}

    void FormLoad(const AddressControls& controls);
    void SetPath(const std::wstring& folder) { lists_.SetPath(folder); }
    void FormDispose();

    void Find();
    void LoadUpdatedList();
    bool UpdateList(bool quiet);

    // Field events; field is 1 to 6, see Field.
    void Inp_Click(int field);
    void Inp_KeyPress(int field);
    void Inp_LostFocus(int field);
    void Inp_Keyup(int field);
    // False when the text is no value of the list; the caller keeps the focus in the field then.
    bool Inp_Validate(int field);

    void LoadTimer_Tick();
    void ShowBottomWarning(const std::wstring& text);
    void ShowTopWarning(const std::wstring& text);
    void ClearErrorTimer_Tick();
    void OneLostFocus();
    void loadcombodata();
    void SelectFromTree();
    void CheckForAddressUpdates(const std::wstring& announcedVersion);
    std::wstring GetLookupListVersion() { return lists_.GetLookupListVersion(); }

    bool Busy() const { return busy_ > 0; }
    std::wstring SelectedText() const; // of the tree; empty when nothing is selected
    HWND PlaceField(int field) const;  // 4 to 6
    const std::wstring& PlaceList(int field) const;
    web::AdvancedCriteria Criteria() const;
    void ClearFields();

  private:
    class BusyScope;

    void SettlePlace(int field);
    bool ShowNotes(unsigned view);
    void ShowFailure(const std::wstring& otherwise);
    const ResultNode* SelectedNode() const;
    void ShowResults();
    void AddNode(std::vector<void*>& items, std::size_t position);
    void ShowNothingFound();
    void ReportFailure();
    bool PlacesAreValid();
    bool FillSlice(HWND combo, const std::vector<std::wstring>& values);
    void ReloadLists();

    object::Quorvex& object_;
    frmAddress& dialog_;
    LookupLists lists_;
    AddressControls controls_;
    std::vector<ResultNode> nodes_; // what the tree shows; an item's parameter is its position here
    int headingCounter_ = 0;
    int busy_ = 0;
    int lastPlace_ = 0; // the place field that was typed in and has not excluded the others yet
    int loadStep_ = 0;
    std::vector<std::wstring> loading_; // the values of the list that is being filled in
    std::size_t loaded_ = 0;
};

} // namespace quorvex::dialogs
