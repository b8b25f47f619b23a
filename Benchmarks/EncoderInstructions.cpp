/// A thousand encodings of each kind, each kind in a function of its own, so that callgrind can count its instructions:
///   valgrind --tool=callgrind --toggle-collect=MeasuredStampFields EncoderInstructions
/// "Fields" is the encoding of a given record. "Block" is the whole way from the result to the registers, with all
/// checks.

#include "StampFrame.h"
#include "ZuControl/ControlProtocol/KnownLayout.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "wBeacon/wMsgInfo.h"

namespace
{

using ZuBench::StampFrame;
using ZuControl::ControlProtocol::ProtocolRegisterBlock;
using ZuControl::ControlProtocol::RegisterEncoder;
using ZuControl::ControlProtocol::WithLayout;

constexpr int TIMES = 1000;

/// The register layout of a protocol. It is known at run time only, so the compiler cannot choose the code in advance.
struct Layout
{
    uint8 bytesPerRegister;
    bool isBigEndian;
};

/// Makes a protected conversion of the blocks callable.
struct Converter : ProtocolRegisterBlock
{
    using ProtocolRegisterBlock::Convert64fTo32s;
};

/// A block as a plug-in derives it, which writes one value at a time.
struct PluginBlock : ProtocolRegisterBlock
{
    using ProtocolRegisterBlock::ProtocolRegisterBlock;
    using ProtocolRegisterBlock::SerializeValue;
};

ZuControl::ControlProtocol::RegisterBlockInfoParams TypeOf(Layout layout)
{
    ZuControl::ControlProtocol::RegisterBlockInfoParams params{};
    params.type = "Plugin";
    params.registerCount = 4;
    params.bytesPerRegister = layout.bytesPerRegister;
    params.isProtocolBigEndian = layout.isBigEndian;
    params.maxInstanceCount = 1;
    return params;
}

void EncodeStamp(uint8* registers, Layout layout, wStamp const& stamp)
{
    WithLayout(layout.bytesPerRegister, layout.isBigEndian, [&](auto fields) {
        fields.Write(registers + 32, static_cast<uint8>(stamp.stampStatus));
        fields.Write(registers, stamp.stampValue);
        fields.Write(registers + 8, stamp.stampEncoder);
        fields.Write(registers + 16, stamp.stampTime);
        fields.Write(registers + 24, stamp.stampCounter);
        for (int i = 33; i < 36; ++i)
        {
            fields.Write(registers + i, uint8{0});
        }
    });
}

void EncodeMeasurement(uint8* registers, Layout layout, double value, uint8 decision)
{
    int32 result = 0;
    int32 isOutOfRange = 0;
    int32 isInvalid = 0;
    Converter::Convert64fTo32s(value, 1000.0, result, isOutOfRange, isInvalid);
    WithLayout(layout.bytesPerRegister, layout.isBigEndian, [&](auto fields) {
        fields.Write(registers, result);
        fields.Write(registers + 4, decision);
    });
}

} // namespace

extern "C" [[gnu::noipa]] void MeasuredStampFields(uint8* registers, Layout const& layout, wStamp const& stamp)
{
    for (int i = 0; i < TIMES; ++i)
    {
        EncodeStamp(registers, layout, stamp);
        asm volatile("" : : : "memory");
    }
}

extern "C" [[gnu::noipa]] void MeasuredMeasurementFields(uint8* registers, Layout const& layout, double const& value)
{
    for (int i = 0; i < TIMES; ++i)
    {
        EncodeMeasurement(registers, layout, value, 1);
        asm volatile("" : : : "memory");
    }
}

extern "C" [[gnu::noipa]] void MeasuredWide(uint8* registers, Layout const& layout, uint64 const& value)
{
    for (int i = 0; i < TIMES; ++i)
    {
        RegisterEncoder(layout.bytesPerRegister, layout.isBigEndian).Write(registers, value);
        asm volatile("" : : : "memory");
    }
}

extern "C" [[gnu::noipa]] void MeasuredSerializeValue(PluginBlock& block, uint8* registers, uint64 const& value)
{
    for (int i = 0; i < TIMES; ++i)
    {
        block.SerializeValue(registers, 0, value, false);
        asm volatile("" : : : "memory");
    }
}

extern "C" [[gnu::noipa]] void MeasuredStampBlock(StampFrame& frame)
{
    for (int i = 0; i < TIMES; ++i)
    {
        frame.EncodeStamp();
    }
}

extern "C" [[gnu::noipa]] void MeasuredMeasurementBlock(StampFrame& frame)
{
    for (int i = 0; i < TIMES; ++i)
    {
        frame.EncodeMeasurement();
    }
}

int main()
{
    constexpr Layout LAYOUT{2, true};
    uint8 registers[64]{};
    MeasuredStampFields(registers, LAYOUT, wStamp{0x33, 1, 2, -3, 4});
    MeasuredMeasurementFields(registers, LAYOUT, 12.345);
    MeasuredWide(registers, LAYOUT, 0x0102030405060708);
    ZuControl::ControlProtocol::ProtocolRegisterBlockInfo type(TypeOf(LAYOUT));
    PluginBlock block({}, type);
    block.SerializeValue(registers, 0, uint64{0}, false); // binds the symbols of the first call before the measurement
    MeasuredSerializeValue(block, registers, 0x0102030405060708);
    StampFrame frame(LAYOUT.bytesPerRegister, LAYOUT.isBigEndian);
    frame.EncodeStamp(); // for the same reason
    frame.EncodeMeasurement();
    MeasuredStampBlock(frame);
    MeasuredMeasurementBlock(frame);
    return registers[0] == 0x02 ? 0 : 1;
}
