#include "Plugins/SparkplugMqtt/EdgeNodeSession.h"

#include "Plugins/SparkplugMqtt/HostState.h"

#include <utility>

namespace SparkplugMqtt
{

IServerLink::~IServerLink() = default;

INodeContent::~INodeContent() = default;

EdgeNodeSession::EdgeNodeSession(Settings newSettings, IServerLink& usedLink, INodeContent& usedContent,
                                 std::optional<uint8> lastBdSeq, ServerWalk::Draw draw)
    : settings(std::move(newSettings)),
      topics(settings.ids, settings.primaryHostId),
      link(usedLink),
      content(usedContent),
      walk(settings.serverCount, std::move(draw)),
      bdSeq(lastBdSeq.value_or(255)) // the first connection has the next number
{
}

void EdgeNodeSession::Tick(Moment now)
{
    bool const isOver = now.steadyUsec >= phaseUntilUsec;
    switch (phase)
    {
    case Phase::PAUSING:
        TakeNumber(now);
        if (isOver && MayBegin(now))
        {
            Begin(now);
        }
        break;
    case Phase::CONNECTING:
    case Phase::SUBSCRIBING:
        if (isOver)
        {
            Leave(now, true);
        }
        break;
    case Phase::WAITING:
        if (isOver && settings.serverCount > 1) // with one server there is no better place to wait
        {
            Leave(now, true);
        }
        break;
    case Phase::BORN:
        BirthIfDue(now);
        if (sessionBornAtUsec.has_value() && now.steadyUsec - *sessionBornAtUsec >= LASTING_USEC)
        {
            walk.NoteSuccess();
            earlyLosses = 0;
        }
        break;
    case Phase::ENDED:
        break;
    }
}

void EdgeNodeSession::Connected(Moment now)
{
    if (phase != Phase::CONNECTING)
    {
        return;
    }
    phase = Phase::SUBSCRIBING;
    phaseUntilUsec = now.steadyUsec + ANSWER_USEC;
    std::vector<std::string> wanted = {topics.nodeCommand, topics.deviceCommand};
    if (!topics.state.empty())
    {
        wanted.push_back(topics.state);
    }
    link.Subscribe(wanted);
}

void EdgeNodeSession::Subscribed(Moment now)
{
    if (phase != Phase::SUBSCRIBING)
    {
        return;
    }
    if (settings.primaryHostId.empty() || isHostOnline)
    {
        phase = Phase::BORN;
        isBirthDue = true;
        BirthIfDue(now);
        return;
    }
    phase = Phase::WAITING;
    phaseUntilUsec = now.steadyUsec + ANSWER_USEC;
}

void EdgeNodeSession::Received(std::string_view topic, std::span<uint8 const> message, Moment now)
{
    if (phase == Phase::PAUSING || phase == Phase::ENDED)
    {
        return;
    }
    if (!topics.state.empty() && topic == topics.state)
    {
        TakeState(message, now);
        return;
    }
    bool const isForNode = topic == topics.nodeCommand;
    if ((!isForNode && topic != topics.deviceCommand) || !DecodeCommand(message, received))
    {
        ++counters.badMessages;
        return;
    }
    ++counters.commands;
    if (isForNode)
    {
        TakeNodeCommand(received, now);
    }
    else
    {
        content.DeviceCommand(received);
    }
}

void EdgeNodeSession::Lost(Moment now)
{
    if (phase == Phase::PAUSING || phase == Phase::ENDED)
    {
        return;
    }
    earlyLosses += sessionBornAtUsec.has_value() ? 1 : 0;
    Pause(now);
}

bool EdgeNodeSession::PublishDeviceData(std::span<uint8 const> metrics, Moment now)
{
    if (!CanPublish())
    {
        return false;
    }
    FramePayload(payload, now.utcMsec, metrics, seq++);
    link.Publish(topics.deviceData, payload);
    ++counters.dataMessages;
    return true;
}

void EdgeNodeSession::RequestBirth(Moment now)
{
    if (phase == Phase::BORN)
    {
        isBirthDue = true;
        BirthIfDue(now);
    }
}

void EdgeNodeSession::End(Moment now)
{
    if (phase != Phase::ENDED)
    {
        Leave(now, false);
        phase = Phase::ENDED;
        if (isNumbered) // there was no connection with this number
        {
            content.BirthSequenceChanged(--bdSeq);
        }
    }
}

/// Numbers the next connection, once in a pause.
void EdgeNodeSession::TakeNumber(Moment now)
{
    if (!isNumbered)
    {
        isNumbered = true;
        numberedAtUsec = now.steadyUsec;
        content.BirthSequenceChanged(++bdSeq); // 0 follows 255
    }
}

/// A program that was killed must not use the number of its last connection again. A disk that takes nothing must not
/// keep the node from its servers for good.
bool EdgeNodeSession::MayBegin(Moment now)
{
    return content.IsBirthSequenceKept() || now.steadyUsec - numberedAtUsec >= KEEPING_USEC;
}

void EdgeNodeSession::Begin(Moment now)
{
    isNumbered = false;
    phase = Phase::CONNECTING;
    phaseUntilUsec = now.steadyUsec + ANSWER_USEC;
    isHostOnline = false;
    hostStampMsec = 0;
    sessionBornAtUsec.reset();
    writer.Clear();
    AddBdSeq(now.utcMsec);
    FramePayload(payload, now.utcMsec, writer.Bytes(), std::nullopt);
    link.Connect(walk.Server(), {topics.nodeDeath, payload});
}

void EdgeNodeSession::Pause(Moment now)
{
    counters.lostSessions += sessionBornAtUsec.has_value() ? 1 : 0;
    sessionBornAtUsec.reset();
    isBirthDue = false;
    phase = Phase::PAUSING;
    phaseUntilUsec = now.steadyUsec + walk.Advance();
}

/// Ends the connection from this side.
void EdgeNodeSession::Leave(Moment now, bool isWalkingOn)
{
    bool const isConnected = phase != Phase::PAUSING && phase != Phase::CONNECTING;
    if (isConnected)
    {
        PublishDeaths(now);
    }
    if (phase != Phase::PAUSING)
    {
        link.Disconnect(isConnected);
    }
    if (isWalkingOn)
    {
        Pause(now);
    }
}

void EdgeNodeSession::TakeState(std::span<uint8 const> message, Moment now)
{
    auto const state = ReadHostState({reinterpret_cast<char const*>(message.data()), message.size()});
    if (!state.has_value())
    {
        ++counters.badMessages;
        return;
    }
    if (state->timestampMsec < hostStampMsec)
    {
        return; // the will of an earlier connection of the host
    }
    hostStampMsec = state->timestampMsec;
    isHostOnline = state->isOnline;
    if (isHostOnline && phase == Phase::WAITING)
    {
        phase = Phase::BORN;
        isBirthDue = true;
        BirthIfDue(now);
    }
    else if (!isHostOnline && (phase == Phase::BORN || (phase == Phase::WAITING && settings.serverCount > 1)))
    {
        Leave(now, true);
    }
}

void EdgeNodeSession::TakeNodeCommand(std::vector<CommandMetric> const& metrics, Moment now)
{
    for (CommandMetric const& metric : metrics)
    {
        bool const* const isWanted = std::get_if<bool>(&metric.value);
        if (metric.name == REBIRTH && isWanted != nullptr && *isWanted)
        {
            ++counters.rebirthRequests;
            RequestBirth(now);
        }
    }
}

void EdgeNodeSession::BirthIfDue(Moment now)
{
    bool const isAllowed = counters.births == 0 || now.steadyUsec - bornAtUsec >= BIRTH_INTERVAL_USEC;
    if (isBirthDue && isAllowed)
    {
        Birth(now);
    }
}

void EdgeNodeSession::Birth(Moment now)
{
    seq = 0;
    writer.Clear();
    AddBdSeq(now.utcMsec);
    writer.Add(Metric{.name = REBIRTH,
                      .alias = std::nullopt,
                      .timestampMsec = now.utcMsec,
                      .type = DataType::BOOLEAN,
                      .value = false});
    content.WriteNodeBirth(writer, now.utcMsec);
    PublishWriter(topics.nodeBirth, now);
    writer.Clear();
    content.WriteDeviceBirth(writer, now.utcMsec);
    PublishWriter(topics.deviceBirth, now);
    isBirthDue = false;
    bornAtUsec = now.steadyUsec;
    sessionBornAtUsec = sessionBornAtUsec.value_or(now.steadyUsec);
    ++counters.births;
}

void EdgeNodeSession::AddBdSeq(uint64 utcMsec)
{
    writer.Add(Metric{.name = BD_SEQ,
                      .alias = std::nullopt,
                      .timestampMsec = utcMsec,
                      .type = DataType::INT64,
                      .value = static_cast<uint64>(bdSeq)});
}

void EdgeNodeSession::PublishWriter(std::string const& topic, Moment now)
{
    FramePayload(payload, now.utcMsec, writer.Bytes(), seq++);
    link.Publish(topic, payload);
}

void EdgeNodeSession::PublishDeaths(Moment now)
{
    writer.Clear();
    if (sessionBornAtUsec.has_value())
    {
        PublishWriter(topics.deviceDeath, now);
    }
    AddBdSeq(now.utcMsec);
    FramePayload(payload, now.utcMsec, writer.Bytes(), std::nullopt);
    link.Publish(topics.nodeDeath, payload);
}

} // namespace SparkplugMqtt
