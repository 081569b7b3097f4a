#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>
#include <windows.h>

#include <oaidl.h>

namespace quorvex::testing {

// What the stand-ins of a mail program record, and what they answer.
struct MailScript {
    std::vector<std::wstring> calls; // "Item.Subject = text", "Item.Attachments.Add(file)"
    std::map<std::wstring, std::wstring>
        children;         // calls without arguments ("Application.CreateItem") that give an object, and its name
    std::wstring failing; // the call that fails
    std::wstring failure = L"The user said no"; // and what it says
    int objects = 0;                            // objects that still live
};

// An automation object of any members: every call, property read and write goes into the script's list.
IDispatch* MakeRecordingObject(MailScript& script, const std::wstring& name);

// Makes a ProgID create recording objects within this process and apartment while it lives: its registry keys and its
// class object.
class ProgramStandIn {
  public:
    ProgramStandIn(const wchar_t* progId, const wchar_t* classId, MailScript& script, const std::wstring& name);
    ProgramStandIn(const ProgramStandIn&) = delete;
    ProgramStandIn& operator=(const ProgramStandIn&) = delete;
    ~ProgramStandIn();

    // Makes the ProgID name another class.
    void SetClass(const std::wstring& classId);

  private:
    std::wstring key_;
    DWORD cookie_ = 0;
};

} // namespace quorvex::testing
