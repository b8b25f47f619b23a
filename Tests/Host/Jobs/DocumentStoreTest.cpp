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
    store.Write("/controls/One/config.json", "2", 1);

    EXPECT_EQ(store.Read("/controls/Two/config.json"), "[1]");
    EXPECT_TRUE(store.Exists("/controls/One/config.json"));
    EXPECT_FALSE(store.Exists("/controls/Three/config.json"));
    EXPECT_EQ(store.All(),
              (DocumentStore::Files{{"controls/One/config.json", "2"}, {"controls/Two/config.json", "[1]"}}));
}

TEST(DocumentStore, RefusesToReadWhatIsNotThere)
{
    EXPECT_EQ(RefusalOf([&] { DocumentStore().Read("/none"); }),
              (Refusal{Zu::Status::NOT_FOUND, "There is no document '/none'"}));
}

TEST(DocumentStore, RefusesToKeepWhatCouldNotBeReadAgain)
{
    DocumentStore store;
    auto const refusal = [&](std::string const& text) {
        return RefusalOf([&] { store.Write("/bad", text.data(), text.size()); });
    };

    EXPECT_EQ(refusal(std::string(DocumentCheck::MAX_BYTES + 1, ' ')),
              (Refusal{Zu::Status::BAD_ARGUMENT, "The document '/bad' cannot be stored: it is longer than 16777216 "
                                                 "bytes"}));
    EXPECT_EQ(refusal(std::string(65, '[') + std::string(65, ']')),
              (Refusal{Zu::Status::BAD_ARGUMENT, "The document '/bad' cannot be stored: it is nested deeper than 64 "
                                                 "levels"}));
    EXPECT_EQ(refusal(std::string(64, '[') + std::string(64, ']')).status, Zu::Status::SUCCESS);
    EXPECT_EQ(refusal("{").status, Zu::Status::BAD_ARGUMENT);
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
