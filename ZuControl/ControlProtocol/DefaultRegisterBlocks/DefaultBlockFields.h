#pragma once

#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuControl/Export.h"

#include <vector>

namespace ZuControl::ControlProtocol
{

struct DefaultControlInputRegisterBlock;
struct DefaultControlOutputRegisterBlock;
struct DefaultMeasurementDecisionRegisterBlock;
struct DefaultMeasurementValueAndDecisionRegisterBlock;
struct DefaultMeasurementValueRegisterBlock;
struct DefaultScannerStateRegisterBlock;
struct DefaultStampRegisterBlock;
struct DefaultSystemStateRegisterBlock;

// The fields of the default blocks, at the offsets that the block has now. A block that derives from one of these classes
// and encodes as it does calls the function of its base in `IDescribedBlock::Fields`.
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultControlInputRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultControlOutputRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultSystemStateRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultScannerStateRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultStampRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultMeasurementValueRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultMeasurementDecisionRegisterBlock const& block);
ZUCONTROL_API std::vector<RegisterField> DefaultFields(DefaultMeasurementValueAndDecisionRegisterBlock const& block);

/// The fields of a block: those that it describes itself, or those of a block of one of the default classes. A block of
/// another class has none, also if it derives from a default class, because it may encode something else.
ZUCONTROL_API std::vector<RegisterField> FieldsOf(ProtocolRegisterBlock const& block);

} // namespace ZuControl::ControlProtocol
