#include "Host/Http/HandshakeFaults.h"

#include "Support/RecordingSink.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(HandshakeFaults, AreLoggedOncePerMinuteWithTheirNumber)
{
    ZuTest::LogRecorder const recorder;
    HandshakeFaults faults;

    faults.Note("192.0.2.7", "the peer does not speak TLS", 1'000'000);
    faults.Note("192.0.2.8", "the peer does not speak TLS", 60'999'999);
    faults.Note("192.0.2.9", "the peer refuses our certificate", 61'000'000);

    ASSERT_EQ(recorder.Lines().size(), 2U);
    EXPECT_EQ(recorder.Lines()[0].text, "1 TLS handshakes with REST clients have failed, the last one with 192.0.2.7: "
                                        "the peer does not speak TLS");
    EXPECT_EQ(recorder.Lines()[1].text, "3 TLS handshakes with REST clients have failed, the last one with 192.0.2.9: "
                                        "the peer refuses our certificate");
}

} // namespace ZuHost
