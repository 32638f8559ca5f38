#include "symbols/NameIndex.h"

#include "symbols/RtsSym.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace _VELK;

using Names = std::vector<std::string>;

/** The keys of one bucket, in the order of its chain. */
Names chain(RtsHashTag const& index, int bucket) {
    Names keys;
    for (RtsHashNode const* node = index.chain(bucket); node != nullptr; node = node->next) {
        keys.emplace_back(node->key);
    }
    return keys;
}

/** The bucket of the only name in an index. */
int bucketOf(char const* key, int bucketCount) {
    RtsHashTag index(bucketCount, false);
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, key, nullptr));
    for (int bucket = 0; bucket < bucketCount; ++bucket) {
        if (index.chain(bucket) != nullptr) {
            return bucket;
        }
    }
    ADD_FAILURE() << key << " is in no bucket";
    return -1;
}

TEST(NameIndexBucket, IsTheSumOfTheUpperCaseBytesByTheBucketCount) {
    EXPECT_EQ(bucketOf("A", 1000), 65);
    EXPECT_EQ(bucketOf("a", 1000), 65);
    EXPECT_EQ(bucketOf("AB", 1000), 131);
    EXPECT_EQ(bucketOf("ba", 1000), 131);
    EXPECT_EQ(bucketOf("z", 1000), 90);
    EXPECT_EQ(bucketOf("1.5", 1000), 49 + 46 + 53);
    EXPECT_EQ(bucketOf("Main.Counter", 1000), 883);
    EXPECT_EQ(bucketOf("Main.Counter", 10), 3);
    EXPECT_EQ(bucketOf("MAIN.COUNTER", 7), 1);
}

TEST(NameIndexBucket, OfTheEmptyNameIsZero) {
    EXPECT_EQ(bucketOf("", 1000), 0);
    EXPECT_EQ(bucketOf("", 1), 0);
}

TEST(NameIndexBucket, BytesAboveAsciiCountAsUnsigned) {
    EXPECT_EQ(bucketOf("\xFF", 1000), 255);
    EXPECT_EQ(bucketOf("\xFF\xFE", 1000), 509);
    EXPECT_EQ(bucketOf("\x80", 7), 2);
}

TEST(NameIndexBucket, NewNamesGoToTheEndOfTheChain) {
    RtsHashTag index(10, false);
    for (char const* const key : {"AB", "x", "BA", "C@"}) {
        EXPECT_TRUE(RtsSym::UtlHashAdd(&index, key, nullptr));
    }
    EXPECT_EQ(chain(index, 1), (Names{"AB", "BA", "C@"})); // 131
    EXPECT_EQ(chain(index, 8), Names{"x"});                // 88
    EXPECT_EQ(chain(index, 0), Names{});
}

TEST(NameIndexBucket, NewIndexHasOnlyEmptyChains) {
    RtsHashTag const index(3, true);
    EXPECT_EQ(index.bucketCount(), 3);
    EXPECT_TRUE(index.copiesKeys());
    for (int bucket = 0; bucket < 3; ++bucket) {
        EXPECT_EQ(index.chain(bucket), nullptr);
    }
    EXPECT_FALSE(RtsHashTag(3, false).copiesKeys());
}

struct NameIndex : testing::Test {
    RtsHashTag index{10, false};
    int one = 1;
    int two = 2;

    void* valueOf(char const* key) {
        RtsHashNode const* const node = RtsSym::UtlHashGet(&index, key);
        return node == nullptr ? nullptr : node->value;
    }
};

TEST_F(NameIndex, FindsWhatWasAddedWhateverItsCase) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "Main.Counter", &one));
    for (char const* const key : {"Main.Counter", "MAIN.COUNTER", "main.counter", "mAIN.cOUNTER"}) {
        EXPECT_EQ(valueOf(key), &one) << key;
    }
    EXPECT_STREQ(RtsSym::UtlHashGet(&index, "MAIN.COUNTER")->key, "Main.Counter");
}

TEST_F(NameIndex, DoesNotFindWhatOnlyResemblesIt) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "AB", &one));
    for (char const* const key : {"BA", "A", "ABA", "ABAAAAAAAAAA", "", "AB ", "A B", "@C"}) {
        EXPECT_EQ(RtsSym::UtlHashGet(&index, key), nullptr) << key;
    }
}

TEST_F(NameIndex, FirstOfAnEqualNameWins) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "Counter", &one));
    EXPECT_FALSE(RtsSym::UtlHashAdd(&index, "COUNTER", &two));
    EXPECT_FALSE(RtsSym::UtlHashAdd(&index, "Counter", &two));
    EXPECT_EQ(valueOf("COUNTER"), &one);
    std::size_t names = 0;
    for (int bucket = 0; bucket < 10; ++bucket) {
        names += chain(index, bucket).size();
    }
    EXPECT_EQ(names, 1U);
}

TEST_F(NameIndex, OnlyLettersHaveACase) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "a[1]", &one));
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "a{1}", &two)); // [ and { differ by the bit that letters differ by
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "a_1", &one));
    EXPECT_EQ(valueOf("A[1]"), &one);
    EXPECT_EQ(valueOf("A{1}"), &two);
}

TEST_F(NameIndex, BytesAboveAsciiAreTheirOwnCase) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "\xE4", &one));
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "\xC4", &two));
    EXPECT_EQ(valueOf("\xE4"), &one);
    EXPECT_EQ(valueOf("\xC4"), &two);
}

TEST_F(NameIndex, EmptyNameIsANameLikeAnyOther) {
    EXPECT_EQ(RtsSym::UtlHashGet(&index, ""), nullptr);
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "", &one));
    EXPECT_FALSE(RtsSym::UtlHashAdd(&index, "", &two));
    EXPECT_EQ(valueOf(""), &one);
}

TEST_F(NameIndex, NullValueIsAValue) {
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, "a", nullptr));
    ASSERT_NE(RtsSym::UtlHashGet(&index, "a"), nullptr);
    EXPECT_EQ(RtsSym::UtlHashGet(&index, "a")->value, nullptr);
}

TEST_F(NameIndex, WithoutTableOrNameNothingIsAddedOrFound) {
    EXPECT_FALSE(RtsSym::UtlHashAdd(nullptr, "a", &one));
    EXPECT_FALSE(RtsSym::UtlHashAdd(&index, nullptr, &one));
    EXPECT_EQ(RtsSym::UtlHashGet(nullptr, "a"), nullptr);
    EXPECT_EQ(RtsSym::UtlHashGet(&index, nullptr), nullptr);
}

TEST_F(NameIndex, WithoutBucketsNothingIsAddedOrFound) {
    for (int const buckets : {0, -1, -2147483647}) {
        RtsHashTag none(buckets, false);
        EXPECT_FALSE(RtsSym::UtlHashAdd(&none, "a", &one)) << buckets;
        EXPECT_EQ(RtsSym::UtlHashGet(&none, "a"), nullptr) << buckets;
    }
}

TEST_F(NameIndex, KeepsTheCallersKeysUnlessItCopies) {
    std::string key = "Counter";
    EXPECT_TRUE(RtsSym::UtlHashAdd(&index, key.c_str(), &one));
    EXPECT_EQ(RtsSym::UtlHashGet(&index, "counter")->key, key.c_str());

    RtsHashTag copying(10, true);
    EXPECT_TRUE(RtsSym::UtlHashAdd(&copying, key.c_str(), &two));
    key = "changed";
    RtsHashNode const* const node = RtsSym::UtlHashGet(&copying, "counter");
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->key, "Counter");
    EXPECT_EQ(node->value, &two);
}

TEST_F(NameIndex, TakesMoreNamesThanExpected) {
    for (std::uint32_t const expected : {0U, 1U, 1000U}) {
        RtsHashTag many(7, true, expected);
        std::vector<std::string> keys;
        keys.reserve(5000);
        for (int i = 0; i < 5000; ++i) {
            keys.push_back("PLC_PRG.Value_" + std::to_string(i));
        }
        for (auto& key : keys) {
            ASSERT_TRUE(RtsSym::UtlHashAdd(&many, key.c_str(), &key)) << key;
        }
        for (auto& key : keys) {
            RtsHashNode const* const node = RtsSym::UtlHashGet(&many, key.c_str());
            ASSERT_NE(node, nullptr) << key;
            ASSERT_EQ(node->value, &key) << key;
            ASSERT_FALSE(RtsSym::UtlHashAdd(&many, key.c_str(), &key)) << key;
        }
        EXPECT_EQ(RtsSym::UtlHashGet(&many, "PLC_PRG.Value_5000"), nullptr);
        std::size_t names = 0;
        for (int bucket = 0; bucket < 7; ++bucket) {
            names += chain(many, bucket).size();
        }
        EXPECT_EQ(names, keys.size());
    }
}

TEST_F(NameIndex, AnswersLikeAWalkThroughTheChain) {
    // Names that share their sums, so that every chain is long.
    std::vector<std::string> keys;
    std::string letters = "abcdef";
    do {
        keys.push_back(letters);
    } while (std::next_permutation(letters.begin(), letters.end()));
    for (auto& key : keys) {
        ASSERT_TRUE(RtsSym::UtlHashAdd(&index, key.c_str(), &key));
    }
    Names const inChain = chain(index, (65 + 66 + 67 + 68 + 69 + 70) % 10);
    EXPECT_EQ(inChain, Names(keys.begin(), keys.end()));
    for (auto& key : keys) {
        EXPECT_EQ(valueOf(key.c_str()), &key);
    }
}

TEST_F(NameIndex, OneChainOfManyNamesDoesNotSlowTheIndexDown) {
    // A walk through this one chain for each name would take twenty billion steps and not end in time.
    constexpr int kNames = 200000;
    RtsHashTag single(1, true);
    for (int i = 0; i < kNames; ++i) {
        ASSERT_TRUE(RtsSym::UtlHashAdd(&single, ("APPLICATION.GVL.rTemperature_" + std::to_string(i)).c_str(), this));
    }
    for (int i = 0; i < kNames; ++i) {
        ASSERT_NE(RtsSym::UtlHashGet(&single, ("application.gvl.RTEMPERATURE_" + std::to_string(i)).c_str()), nullptr);
    }
    EXPECT_EQ(chain(single, 0).size(), static_cast<std::size_t>(kNames));
}

} // namespace
