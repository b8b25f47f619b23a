#include "ZuControl/Plc/PlcTag.h"
#include "ZuControl/Plc/StructuredTextParts.h"

#include <algorithm>

namespace ZuControl::Plc::StructuredText
{

using ControlProtocol::FieldRole;
using ControlProtocol::FieldType;

namespace
{

constexpr std::string_view QUEUE_BLOCK = R"(
(* Takes each result of a queue exactly once. isNew is TRUE for one cycle: the values of the queue in the map are a result
   that was not there before. The calling program writes number to the register of the queue (function 6) while write is
   TRUE, and then sets isWritten, or isRefused if the write has failed, until write is FALSE. A refused write is repeated.
   The calling program reads all registers of a queue in one request. *)
FUNCTION_BLOCK {prefix}_Queue
VAR_INPUT
  fits : BOOL;                  (* from {prefix}_Decode *)
  takes : BOOL := TRUE;         (* FALSE: the queue keeps its results *)
  held : UINT;                  (* these three from the map *)
  session : UINT;
  lostBefore : UINT;
  isSwapped : BOOL;             (* the low byte comes first *)
  isWritten : BOOL;
  isRefused : BOOL;
END_VAR
VAR_OUTPUT
  isNew : BOOL;
  write : BOOL;
  number : WORD;                (* of the last result, in the order of the register *)
  overflow : BOOL;              (* with isNew: the device has lost results before this one, *)
  lost : UINT;                  (* so many; 65535 stands for more, too *)
  missed : BOOL;                (* with isNew: another master has taken results before this one *)
  restarted : BOOL;             (* with isNew: the queue has begun anew, and its results of before are lost *)
END_VAR
VAR
  hasTaken : BOOL;
  state : INT;                  (* the labels of the CASE *)
  taken : UINT;
  takenSession : UINT;
  next : UINT;
END_VAR
isNew := FALSE;
overflow := FALSE;
lost := 0;
missed := FALSE;
restarted := FALSE;
CASE state OF
0: (* waits for another result *)
  IF fits AND takes AND held <> 0 AND (NOT hasTaken OR held <> taken OR session <> takenSession) THEN
    isNew := TRUE;
    overflow := lostBefore > 0;
    lost := lostBefore;
    restarted := hasTaken AND session <> takenSession;
    missed := hasTaken AND NOT restarted AND held <> next;
    hasTaken := TRUE;
    taken := held;
    takenSession := session;
    next := 1; (* 0 is no number *)
    IF taken < 65535 THEN
      next := taken + 1;
    END_IF;
    number := UINT_TO_WORD(taken);
    IF isSwapped THEN
      number := ROL(number, 8);
    END_IF;
    state := 1;
  END_IF;
1: (* the last write ends *)
  IF NOT isWritten AND NOT isRefused THEN
    write := TRUE;
    state := 2;
  END_IF;
ELSE (* 2: the write runs *)
  IF isWritten THEN
    write := FALSE;
    state := 0;
  ELSIF isRefused THEN
    write := FALSE;
    state := 1;
    IF held <> taken OR session <> takenSession THEN
      state := 0; (* the result is gone *)
    END_IF;
  END_IF;
END_CASE;
END_FUNCTION_BLOCK
)";

constexpr std::string_view EXAMPLE = R"(
(* The queue at register {register}: take(fits := decode.fits, held := map.{held}, session := map.{session},
   lostBefore := map.{lostBefore}, isSwapped := {isSwapped}, isWritten := isWritten, isRefused := isRefused); *)
)";

/// The tag with this role in the block of `tag`; null if there is none that is a plain number.
PlcTag const* Find(std::vector<PlcTag const*> const& tags, PlcTag const& tag, FieldRole role)
{
    auto const found = std::ranges::find_if(tags, [&tag, role](PlcTag const* one) {
        return one->blockAddress == tag.blockAddress && one->field.role == role;
    });
    return found != tags.end() && (*found)->field.type == FieldType::UINT ? *found : nullptr;
}

/// The call for one queue; empty if its tags lack a number that the call needs.
std::string ExampleFor(std::vector<PlcTag const*> const& tags, PlcTag const& acknowledge)
{
    PlcTag const* const held = Find(tags, acknowledge, FieldRole::QUEUE_NUMBER);
    PlcTag const* const session = Find(tags, acknowledge, FieldRole::QUEUE_SESSION);
    PlcTag const* const lostBefore = Find(tags, acknowledge, FieldRole::QUEUE_LOST_BEFORE);
    if (held == nullptr || session == nullptr || lostBefore == nullptr)
    {
        return "";
    }
    return Filled(EXAMPLE, {{"register", std::to_string(acknowledge.address)},
                            {"held", held->name},
                            {"session", session->name},
                            {"lostBefore", lostBefore->name},
                            {"isSwapped", acknowledge.order.areBytesSwapped ? "TRUE" : "FALSE"}});
}

} // namespace

std::string QueueBlock(std::string const& prefix, std::vector<PlcTag const*> const& tags)
{
    std::string examples;
    for (PlcTag const* const tag : tags)
    {
        if (tag->field.role == FieldRole::QUEUE_ACKNOWLEDGE)
        {
            examples += ExampleFor(tags, *tag);
        }
    }
    return examples.empty() ? "" : Filled(QUEUE_BLOCK, {{"prefix", prefix}}) + examples;
}

} // namespace ZuControl::Plc::StructuredText
