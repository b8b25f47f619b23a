#include "Host/Security/PasswordRules.h"

#include "Host/Security/UnicodeText.h"
#include "Host/Security/UserName.h"
#include "Host/Security/WordList.h"
#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuHost::PasswordRules
{

namespace
{

constexpr char const* PRODUCT = "zucontrol";
constexpr std::size_t LEAST_NAME_BYTES = 4; // a shorter name is a part of too many words

/// Whether the text is a shorter text several times over, the last time perhaps cut: "abcabcabca".
bool IsRepetition(std::u32string_view text)
{
    for (std::size_t period = 1; period <= text.size() / 2; ++period)
    {
        if (text.substr(period) == text.substr(0, text.size() - period))
        {
            return true;
        }
    }
    return false;
}

/// Whether the characters follow each other: "abcdefghijklmno", "987654321098765".
bool IsSequence(std::u32string_view text)
{
    auto const goesBy = [text](int step) {
        for (std::size_t i = 1; i < text.size(); ++i)
        {
            bool const isAfterLastDigit = step > 0 && text[i - 1] == U'9' && text[i] == U'0';
            bool const isBeforeFirstDigit = step < 0 && text[i - 1] == U'0' && text[i] == U'9';
            bool const isNext = static_cast<int64_t>(text[i]) - static_cast<int64_t>(text[i - 1]) == step;
            if (!isNext && !isAfterLastDigit && !isBeforeFirstDigit)
            {
                return false;
            }
        }
        return true;
    };
    return goesBy(1) || goesBy(-1);
}

bool IsLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || static_cast<unsigned char>(byte) >= 0x80;
}

/// The text without the digits, signs and spaces at its ends.
std::string CoreOf(std::string const& text)
{
    auto const first = std::ranges::find_if(text, IsLetter);
    auto const end = std::find_if(text.rbegin(), std::make_reverse_iterator(first), IsLetter).base();
    return {first, end};
}

} // namespace

std::string Prepared(std::string_view password)
{
    std::string prepared;
    if (password.size() <= 4 * MAX_BYTES)
    {
        auto const normalised = UnicodeText::Normalised(password);
        if (!normalised.has_value())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The password is not UTF-8.");
        }
        prepared = *normalised;
    }
    if (password.size() > 4 * MAX_BYTES || prepared.size() > MAX_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The password is longer than %zu bytes.", MAX_BYTES);
    }
    return prepared;
}

std::string FaultOf(std::string const& password, UserName const& user, WordList const& words)
{
    std::u32string const characters = UnicodeText::Characters(password);
    if (characters.size() < MIN_CHARACTERS)
    {
        return "A password has at least " + std::to_string(MIN_CHARACTERS) + " characters.";
    }
    if (std::ranges::any_of(characters, UnicodeText::IsUnprintable))
    {
        return "The password has a control or invisible character, which not every keyboard can type.";
    }
    std::string const folded = UnicodeText::Folded(password);
    std::u32string const foldedCharacters = UnicodeText::Characters(folded);
    if (IsRepetition(foldedCharacters))
    {
        return "The password repeats a shorter text, which is guessed early.";
    }
    if (IsSequence(foldedCharacters))
    {
        return "The password is a sequence of neighbouring characters, which is guessed early.";
    }
    bool const hasName = user.Key().size() >= LEAST_NAME_BYTES && folded.find(user.Key()) != folded.npos;
    if (hasName || folded.find(PRODUCT) != folded.npos)
    {
        return "The password contains the name of the user or of the product, which is guessed early.";
    }
    if (words.Contains(folded) || words.Contains(CoreOf(folded)))
    {
        return "The password is a word of the dictionary, which is guessed early.";
    }
    return {};
}

} // namespace ZuHost::PasswordRules
