#include "ZuApi/Params/TextAttribute.h"

#include "ZuApi/InternedText.h"
#include "ZuApi/LazyBuildLock.h"
#include "ZuApi/Properties/Value.h"
#include "wApi/wMutex.h"

#include <memory>

namespace Zu::Params
{

namespace
{

using Properties::Internal::InternedText;

constexpr std::uintptr_t TEXT_MARK = 1;

bool IsText(std::uintptr_t word)
{
    return word == 0 || (word & TEXT_MARK) != 0;
}

void* TextIn(std::uintptr_t word)
{
    return reinterpret_cast<void*>(word & ~TEXT_MARK);
}

} // namespace

/// The node, and the interned text from before it: another reader may still be using that text.
struct TextAttribute::Made
{
    explicit Made(std::string const& text) : node(text)
    {
    }

    Properties::Value<std::string> node;
    InternedText origin;
};

TextAttribute::~TextAttribute()
{
    std::uintptr_t const held = word.load(std::memory_order_relaxed);
    if (IsText(held))
    {
        InternedText::Attach(TextIn(held));
        return;
    }
    delete reinterpret_cast<Made*>(held);
}

std::string const& TextAttribute::Get() const noexcept
{
    std::uintptr_t const held = word.load(std::memory_order_acquire);
    return IsText(held) ? InternedText::TextOf(TextIn(held)) : reinterpret_cast<Made*>(held)->node.Get();
}

TextAttribute& TextAttribute::Set(std::string const& newText)
{
    std::uintptr_t const held = word.load(std::memory_order_acquire);
    if (!IsText(held))
    {
        reinterpret_cast<Made*>(held)->node.Set(newText);
    }
    else if (Get() != newText)
    {
        Keep(InternedText(newText).Detach());
    }
    return *this;
}

void TextAttribute::Share(InternedText newText)
{
    std::uintptr_t const held = word.load(std::memory_order_acquire);
    if (!IsText(held))
    {
        reinterpret_cast<Made*>(held)->node.Set(newText.Get());
    }
    else if (InternedText::TextOf(TextIn(held)) != newText.Get())
    {
        // ^ Only for a different text: the store would drop a node that a reader creates at the same time.
        Keep(newText.Detach());
    }
}

void TextAttribute::CopyFrom(TextAttribute const& other)
{
    std::uintptr_t const held = word.load(std::memory_order_acquire);
    std::uintptr_t const source = other.word.load(std::memory_order_acquire);
    if (!IsText(held) || !IsText(source))
    {
        Set(other.Get());
    }
    else if (held != source)
    {
        InternedText borrowed = InternedText::Attach(TextIn(source));
        Share(borrowed);
        borrowed.Detach(); // the reference stays the other attribute's
    }
}

Properties::Value<std::string>& TextAttribute::Node() const
{
    std::uintptr_t held = word.load(std::memory_order_acquire);
    if (IsText(held))
    {
        Zu::MutexLock const guard(Properties::Internal::LazyBuildLock());
        held = word.load(std::memory_order_acquire);
        if (IsText(held))
        {
            auto made = std::make_unique<Made>(Get());
            made->origin = InternedText::Attach(TextIn(held));
            held = reinterpret_cast<std::uintptr_t>(made.release());
            word.store(held, std::memory_order_release);
        }
    }
    return reinterpret_cast<Made*>(held)->node;
}

/// Takes over a detached interned text and releases the previous one.
void TextAttribute::Keep(void* text) noexcept
{
    std::uintptr_t const marked = text != nullptr ? reinterpret_cast<std::uintptr_t>(text) | TEXT_MARK : 0;
    std::uintptr_t const old = word.load(std::memory_order_relaxed); // relaxed: no other thread uses the attribute now
    word.store(marked, std::memory_order_release);
    InternedText::Attach(TextIn(old));
}

} // namespace Zu::Params
