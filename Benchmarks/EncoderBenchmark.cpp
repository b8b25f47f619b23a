/// Encoding records into registers: the encoder compared with a loop over the bytes of each value, and the extra cost
/// of a block, which checks the result and determines its type.

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterEncoder.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

namespace
{

using namespace ZuControl::ControlProtocol;

using Answer = DefaultControlOutputRegisterBlock;
using System = DefaultSystemStateRegisterBlock;
using Scanner = DefaultScannerStateRegisterBlock;
using Stamp = DefaultStampRegisterBlock;
using Registers = std::array<uint8, 512>;

/// Writes values byte by byte and looks up the layout for every byte.
class ByteLoop final
{
public:
    ByteLoop(uint8* newBuffer, ProtocolRegisterBlockInfo const& newInfo) : buffer(newBuffer), info(newInfo)
    {
    }

    template <typename T>
    void Write(size_t offset, T value) const
    {
        auto const wide =
            static_cast<uint64>(static_cast<std::conditional_t<std::is_signed_v<T>, int64, uint64>>(value));
        size_t const bytes = info.BytesPerRegister();
        size_t const width = std::max(bytes, sizeof(T));
        if (!info.IsProtocolBigEndian())
        {
            for (size_t i = 0; i < width; ++i)
            {
                buffer[offset + i] = static_cast<uint8>(wide >> (8 * i));
            }
            return;
        }
        for (size_t r = 0; r < width / bytes; ++r)
        {
            for (size_t i = 0; i < bytes; ++i)
            {
                buffer[offset + bytes * (r + 1) - i - 1] =
                    static_cast<uint8>(wide >> ((width - 1 - bytes * r - i) * 8));
            }
        }
    }

private:
    uint8* const buffer;
    ProtocolRegisterBlockInfo const& info;
};

/// Writes values with the layout chosen once, as the blocks do.
class ChosenOnce final
{
public:
    ChosenOnce(uint8* newBuffer, ProtocolRegisterBlockInfo const& info)
        : buffer(newBuffer), encoder(info.BytesPerRegister(), info.IsProtocolBigEndian())
    {
    }

    template <typename T>
    void Write(size_t offset, T value) const
    {
        encoder.Write(buffer + offset, value);
    }

private:
    uint8* const buffer;
    RegisterEncoder const encoder;
};

RegisterBlockInfoParams TypeOf(std::shared_ptr<IProtocolRegisterBlockFactory> factory, uint16 registers,
                               benchmark::State const& state)
{
    RegisterBlockInfoParams params;
    params.type = "Record";
    params.registerCount = registers;
    params.bytesPerRegister = static_cast<uint8>(state.range(0));
    params.isProtocolBigEndian = state.range(1) != 0;
    params.maxInstanceCount = 1;
    params.hasDataSource = true;
    params.factory = std::move(factory);
    return params;
}

/// One block with registers of the layout that the arguments of the run name.
template <typename Block>
struct Placed
{
    Placed(uint16 registers, benchmark::State const& state)
        : info(TypeOf(std::make_shared<ProtocolRegisterBlockFactory<Block>>(), registers, state)),
          block(RegisterBlockParams(), info)
    {
    }

    ProtocolRegisterBlockInfo info;
    Block block;
    Registers registers{};
};

template <typename Block, typename Data>
void WriteWithBlock(benchmark::State& state, uint16 registers, Data const& data)
{
    Placed<Block> placed(registers, state);
    size_t const size = placed.info.SerializedOutputSize();
    for (auto _ : state)
    {
        placed.block.Serialize(placed.registers.data(), size, &data, sizeof data);
        benchmark::DoNotOptimize(placed.registers);
        benchmark::ClobberMemory();
    }
}

template <typename Writer, typename Block, typename Step>
void WriteWith(benchmark::State& state, uint16 registers, Step&& step)
{
    Placed<Block> placed(registers, state);
    for (auto _ : state)
    {
        step(Writer(placed.registers.data(), placed.info), placed.registers.data(), placed.info.BytesPerRegister());
        benchmark::DoNotOptimize(placed.registers);
        benchmark::ClobberMemory();
    }
}

Answer::DefaultCommandResultData const ANSWER{0x1234, CommandStatusDone};
Scanner::DefaultScannerStateData const SCANNER{1, 2, -3, 4};

System::DefaultSystemStateData SystemRecord()
{
    System::DefaultSystemStateData data{};
    data.jobFileNameLength = 64;
    data.value64 = 0x0102030405060708;
    std::memset(data.jobFileName, 'x', sizeof data.jobFileName);
    return data;
}

void AnswerWithBlock(benchmark::State& state)
{
    WriteWithBlock<Answer>(state, 4, ANSWER);
}

template <typename Writer>
void AnswerWith(benchmark::State& state)
{
    WriteWith<Writer, Answer>(state, 4, [](auto const& loop, uint8* /*registers*/, size_t /*bytes*/) {
        loop.Write(0, ANSWER.requestId);
        loop.Write(2, static_cast<uint8>(ANSWER.status));
    });
}

void SystemWithBlock(benchmark::State& state)
{
    WriteWithBlock<System>(state, 76, SystemRecord());
}

template <typename Writer>
void SystemWith(benchmark::State& state)
{
    WriteWith<Writer, System>(state, 76, [data = SystemRecord()](auto const& loop, uint8* registers, size_t bytes) {
        loop.Write(8, data.stateByte0);
        loop.Write(0, data.value64);
        loop.Write(9, data.jobFileNameLength);
        loop.Write(74, data.stateByte2);
        loop.Write(75, data.stateByte3);
        std::memset(registers + 10, 0, bytes * 64);
        for (size_t i = 0; i < data.jobFileNameLength; ++i)
        {
            loop.Write(10 + bytes * i, static_cast<int8>(data.jobFileName[i]));
        }
    });
}

void ScannerWithBlock(benchmark::State& state)
{
    WriteWithBlock<Scanner>(state, 18, SCANNER);
}

template <typename Writer>
void ScannerWith(benchmark::State& state)
{
    WriteWith<Writer, Scanner>(state, 18, [](auto const& loop, uint8* /*registers*/, size_t /*bytes*/) {
        loop.Write(16, SCANNER.scannerByte0);
        loop.Write(0, SCANNER.encoderValue);
        loop.Write(8, SCANNER.syncTime);
        loop.Write(17, SCANNER.scannerByte1);
    });
}

/// A result with a stamp, as it comes from the pipeline.
struct StampResult
{
    StampResult()
    {
        ZuVision::ZvStampMsg* madeMsg = nullptr;
        ZuVision::ZvStampMsg_Construct(&madeMsg, wStamp{0x33, 1, 2, -3, 4}, nullptr);
        msg.reset(madeMsg);
        wMsgInfo* madeMsgInfo = nullptr;
        wMsgInfo_Construct(&madeMsgInfo, 0, 0, msg.get(), nullptr);
        msgInfo.reset(madeMsgInfo);
        ZuCore::ResultInfo madeInfo = nullptr;
        ZuCore::ResultInfo_Construct(&madeInfo, "source", ZuCore::RESULT_TYPE_STAMP, nullptr);
        info.reset(madeInfo);
        ZuCore::ResultItem madeItem = nullptr;
        ZuCore::ResultItem_Construct(&madeItem, madeMsgInfo, madeInfo, nullptr);
        item.reset(madeItem);
    }

    wHandle<void> msg;
    wHandle<wMsgInfo> msgInfo;
    wHandle<ZuCore::ResultInfoObject> info;
    wHandle<ZuCore::ResultItemObject> item;
};

void StampWithBlock(benchmark::State& state)
{
    StampResult const result;
    WriteWithBlock<Stamp>(state, 36, Stamp::DefaultScanOutputInputData{result.item.get(), 0});
}

/// Determines the type of the message as the block does, so that only the encoding differs.
template <typename Writer>
void StampWith(benchmark::State& state)
{
    StampResult const result;
    WriteWith<Writer, Stamp>(state, 36, [&result](auto const& loop, uint8* /*registers*/, size_t /*bytes*/) {
        void* const msg = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(result.item.get()));
        if (wObject_Is(msg, ZuVision::ZvArrayMsg_Class) || wObject_Is(msg, ZuVision::ZvNullMsg_Class) ||
            wObject_Is(msg, ZuVision::ZvDataMsg_Class) ||
            ZuCore::ResultInfo_Type(ZuCore::ResultItem_ResultInfo(result.item.get())) != ZuCore::RESULT_TYPE_STAMP)
        {
            return;
        }
        wStamp const& stamp = *ZuVision::ZvMsg_StampAt(msg, 0);
        loop.Write(32, static_cast<uint8>(((stamp.stampStatus & 0x22) != 0 ? 2 : 0) |
                                          ((stamp.stampStatus & 0x11) != 0 ? 1 : 0)));
        loop.Write(0, stamp.stampValue);
        loop.Write(8, stamp.stampEncoder);
        loop.Write(16, stamp.stampTime);
        loop.Write(24, stamp.stampCounter);
        for (size_t offset = 33; offset < 36; ++offset)
        {
            loop.Write(offset, uint8{0});
        }
    });
}

/// Runs the benchmark for every layout. The arguments are the bytes per register, and 1 for a big-endian protocol.
void EveryLayout(benchmark::internal::Benchmark* measured)
{
    measured->ArgNames({"bytes", "big"})->ArgsProduct({{1, 2}, {0, 1}});
}

BENCHMARK(AnswerWithBlock)->Name("Encode/Answer/Block")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(AnswerWith, ChosenOnce)->Name("Encode/Answer/Encoder")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(AnswerWith, ByteLoop)->Name("Encode/Answer/ByteLoop")->Apply(EveryLayout);
BENCHMARK(ScannerWithBlock)->Name("Encode/Scanner/Block")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(ScannerWith, ChosenOnce)->Name("Encode/Scanner/Encoder")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(ScannerWith, ByteLoop)->Name("Encode/Scanner/ByteLoop")->Apply(EveryLayout);
BENCHMARK(SystemWithBlock)->Name("Encode/System/Block")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(SystemWith, ChosenOnce)->Name("Encode/System/Encoder")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(SystemWith, ByteLoop)->Name("Encode/System/ByteLoop")->Apply(EveryLayout);
BENCHMARK(StampWithBlock)->Name("Encode/Stamp/Block")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(StampWith, ChosenOnce)->Name("Encode/Stamp/Encoder")->Apply(EveryLayout);
BENCHMARK_TEMPLATE(StampWith, ByteLoop)->Name("Encode/Stamp/ByteLoop")->Apply(EveryLayout);

} // namespace
