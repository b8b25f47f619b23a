#pragma once

#include "ZuApi/Exception.h"
#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wArrayList.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <string>

namespace ZuTest
{

/// A result set that a test fills item by item, as the sensor does.
class TestFrame final
{
public:
    TestFrame()
    {
        ZuCore::ResultSet made = nullptr;
        ZU_CHECK(ZuCore::ResultSet_Construct(&made, nullptr));
        set.reset(made);
    }

    TestFrame& Stamp(std::string const& dataSource, wStamp const& stamp)
    {
        ZuVision::ZvStampMsg* message = nullptr;
        ZU_CHECK(ZuVision::ZvStampMsg_Construct(&message, stamp, nullptr));
        return Add(dataSource, ZuCore::RESULT_TYPE_STAMP, message);
    }

    TestFrame& Measurement(std::string const& dataSource, double value, uint8 decision = 1)
    {
        ZuVision::ZvMeasurementMsg* message = nullptr;
        ZU_CHECK(ZuVision::ZvMeasurementMsg_Construct(&message, value, decision, nullptr));
        return Add(dataSource, ZuCore::RESULT_TYPE_MEASUREMENT, message);
    }

    TestFrame& Null(std::string const& dataSource)
    {
        ZuVision::ZvNullMsg* message = nullptr;
        ZU_CHECK(ZuVision::ZvNullMsg_Construct(&message, nullptr));
        return Add(dataSource, ZuCore::RESULT_TYPE_MEASUREMENT, message);
    }

    ZuCore::ResultSet Set() const
    {
        return set.get();
    }

    ZuCore::ResultItem First() const
    {
        return ZuCore::ResultSet_At(set.get(), 0);
    }

private:
    TestFrame& Add(std::string const& dataSource, uint16 type, void* message)
    {
        ZuCore::ResultInfo info = nullptr;
        ZU_CHECK(ZuCore::ResultInfo_Construct(&info, dataSource, type, nullptr));
        wMsgInfo* msgInfo = nullptr;
        ZU_CHECK(wMsgInfo_Construct(&msgInfo, 0, 0, message, nullptr));
        wObject_Release(message); // the message info shares it
        ZU_CHECK(ZuCore::ResultSet_Add(set.get(), msgInfo, info, 0));
        return *this;
    }

    wHandle<ZuCore::ResultSetObject> set;
};

/// The list of sets that a dispatcher passes to a handler in one call.
class TestBatch final
{
public:
    TestBatch()
    {
        ZU_CHECK(wArrayList_Construct(&list, nullptr, 4, nullptr));
    }

    TestBatch& Add(TestFrame const& frame)
    {
        ZU_CHECK(wArrayList_Add(list, frame.Set()));
        wObject_Share(frame.Set());
        return *this;
    }

    wArrayList& List()
    {
        return list;
    }

private:
    wArrayList list;
};

} // namespace ZuTest
