#pragma once

#include "Host/Security/Accounts.h"
#include "Host/Security/PasswordHasher.h"
#include "Host/Security/SecurityStore.h"
#include "Host/Security/SetupCode.h"
#include "Host/Security/WordList.h"
#include "Support/RecordingTrail.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/Caller.h"

#include <gtest/gtest.h>

#include <string>

namespace ZuHost
{

/// Accounts in an archive of their own, with cheap hashes and a clock that stands still.
class AccountsFixture : public testing::Test
{
protected:
    static constexpr uint64 SECOND = 1'000'000;
    static constexpr char const* PASSWORD = "correct horse battery";
    static constexpr char const* OTHER_PASSWORD = "wrong donkey battery";

    /// A program with this role.
    static ZuRest::Caller Program(ZuCommon::Role role)
    {
        return {role, "token line 4", "https 192.0.2.9", "", true};
    }

    static ZuRest::Caller Stranger(std::string const& address = "192.0.2.7")
    {
        return {ZuCommon::Role::NONE, "", "https " + address, "", true};
    }

    void Add(char const* name, ZuCommon::Role role, char const* password = PASSWORD)
    {
        accounts.AddUser(Program(ZuCommon::Role::ADMINISTRATOR), UserName(name), role, password);
    }

    /// Logs a user in and returns the user as the sender of further requests.
    ZuRest::Caller LogIn(char const* name, char const* password = PASSWORD)
    {
        auto const login = accounts.LogIn(Stranger(), name, password);
        if (!login.opened.has_value())
        {
            ADD_FAILURE() << "no login of " << name;
            return Stranger();
        }
        Sessions::Session const& session = login.opened->session;
        return {session.role, "user " + session.user.Text(), session.source, session.id, true};
    }

    /// The code that was offered last.
    std::string OfferedCode()
    {
        setupCode.Offer();
        return shown.substr(shown.rfind(": ") + 2, 19);
    }

    std::vector<std::string> TrailSince(std::size_t begin)
    {
        std::vector<std::string> lines = trail.Lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(begin));
        return lines;
    }

    ZuTest::ScratchFolder scratch;
    uint64 nowUsec = 1'000'000 * SECOND;
    std::string shown; // on the terminal
    SecurityStore archive{scratch / "security"};
    UserStore users{archive};
    Sessions sessions{users, [this] { return nowUsec; }};
    PasswordHasher hasher{{8 * 1024 * 1024, 1}};
    WordList words;
    SetupCode setupCode{scratch.path,
                        [this](std::string const& text) {
                            shown = text;
                            return true;
                        },
                        [this] { return nowUsec; }};
    ZuTest::RecordingTrail trail;
    Accounts::Parts parts{users, sessions, hasher, words, setupCode, trail, [this](ZuRest::Caller const& caller) {
                              return caller.sessionId.empty() || sessions.IsCurrent(caller);
                          }};
    Accounts accounts{parts, [this] { return nowUsec; }};
};

} // namespace ZuHost
