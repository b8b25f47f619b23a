#include "Host/Jobs/DocumentStore.h"

#include "Host/Store/DocumentCheck.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <vector>

namespace ZuHost
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(DocumentStore, KnowsDocumentsByTheirPathsWithoutTheSlashAtTheHead)
{
    DocumentStore store(DocumentStore::Files{{"controls/One/config.json", "{}"}});

    store.Write("/controls/Two/config.json", "[1]", 3);
    store.Write("/controls/One/config.json", "", 0);

    EXPECT_EQ(store.Read("/controls/Two/config.json"), "[1]");
    EXPECT_TRUE(store.Exists("/controls/One/config.json"));
    EXPECT_FALSE(store.Exists("/controls/Three/config.json"));
    EXPECT_EQ(store.All(),
              (DocumentStore::Files{{"controls/One/config.json", ""}, {"controls/Two/config.json", "[1]"}}));
}

TEST(DocumentStore, RefusesToReadWhatIsNotThereAndToKeepWhatIsTooLong)
{
    DocumentStore store;
    std::string const tooLong(DocumentCheck::MAX_BYTES + 1, ' ');

    EXPECT_EQ(RefusalOf([&] { store.Read("/none"); }),
              (Refusal{Zu::Status::NOT_FOUND, "There is no document '/none'"}));
    EXPECT_EQ(RefusalOf([&] { store.Write("/long", tooLong.data(), tooLong.size()); }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "The document '/long' is longer than 16777216 bytes"}));
    EXPECT_FALSE(store.Exists("/long"));
}

TEST(DocumentStore, TellsWhichDocumentsAreAskedFor)
{
    std::vector<std::string> asked;
    DocumentStore const store(DocumentStore::Files{{"a", ""}},
                              [&asked](std::string const& name) { asked.push_back(name); });

    store.Exists("/a");
    store.Exists("/b");
    store.Read("/a");

    EXPECT_EQ(asked, (std::vector<std::string>{"a", "b"}));
}

} // namespace ZuHost
