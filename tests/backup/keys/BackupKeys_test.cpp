#include "backup/keys/BackupKeys.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>

#include "backup/keys/FileCipher.h"
#include "backup/keys/KeyWrap.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleKeys.h"

namespace salvor {
namespace {

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string unhex(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
    return bytes;
}

std::string item(const std::string& tag, const std::string& value) {
    const auto size = static_cast<char>(value.size());
    return tag + std::string(3, '\0') + size + value;
}

std::string number(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

// Published key bags; their password is "hashcat".
TEST(Unlocking, OpensPublishedKeyBagsAndToldWrongPasswordsApart) {
    const std::string before =
        item("UUID", std::string(16, 'b')) +
        item("SALT", unhex("4542263740587424862267232255853830404566")) +
        item("ITER", number(10'000)) + item("UUID", std::string(16, 'c')) +
        item("CLAS", number(4)) + item("WRAP", number(2)) +
        item("WPKY", unhex("b8e3f3a970239b22ac199b622293fe4237b9d16e74bad2c3c3568cd1bd3c4716"
                           "15a6c4f867265642"));
    const std::string since =
        item("UUID", std::string(16, 'b')) +
        item("SALT", unhex("2353363784073608264337337723324886300850")) +
        item("ITER", number(10'000)) + item("DPIC", number(10'000'000)) +
        item("DPSL", unhex("425b4bb4e200b5fd4c66979c9caca31716052063")) +
        item("UUID", std::string(16, 'c')) + item("CLAS", number(4)) + item("WRAP", number(2)) +
        item("WPKY", unhex("8b715f516ff8e64442c478c2d9abb046fc6979ab079007d3dbcef3ddd84217f4"
                           "c3db01362d88fa68"));
    const auto old = KeyBag::parse(bytesOf(before));
    ASSERT_TRUE(old);
    EXPECT_EQ(unlock(*old, bytesOf("hashcat")).result, Unlock::Open);
    EXPECT_EQ(unlock(*old, bytesOf("Hashcat")).result, Unlock::WrongPassword);
    EXPECT_EQ(unlock(*old, {}).result, Unlock::WrongPassword);

    auto bag = KeyBag::parse(bytesOf(since));
    ASSERT_TRUE(bag);
    std::uint64_t told = 0;
    const auto opened = unlock(*bag, bytesOf("hashcat"), {}, [&](auto done, auto all) {
        EXPECT_LE(told, done);
        EXPECT_LE(told = done, all);
    });
    EXPECT_EQ(opened.result, Unlock::Open);
    EXPECT_GT(told, 10'000'000U);

    std::stop_source stop;
    stop.request_stop();
    told = 0;
    EXPECT_EQ(
        unlock(*bag, bytesOf("hashcat"), stop.get_token(), [&](auto done, auto) { told = done; })
            .result,
        Unlock::Cancelled);
    EXPECT_LT(told, 100'000U) << "at once";
    bag->firstIterations = 4'000'000'000;
    EXPECT_EQ(unlock(*bag, bytesOf("hashcat")).result, Unlock::TooManyRounds);
}

TEST(KeyBags, AreReadAsFarAsTheyGo) {
    const std::string bag = SampleKeys(1, "x", 10).bag();
    const auto whole = KeyBag::parse(bytesOf(bag));
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->classes.size(), 11U);
    EXPECT_EQ(whole->rounds(), 10'010U);
    // Cut anywhere it is a smaller one or none, and never more.
    std::size_t most = 0;
    for (std::size_t size = 0; size < bag.size(); ++size) {
        const auto cut = KeyBag::parse(bytesOf(bag.substr(0, size)));
        const std::size_t classes = cut ? cut->classes.size() : 0;
        EXPECT_GE(classes, most) << size;
        most = std::max(most, classes);
    }
    // What is there opens, though some classes are damaged or bound to the device.
    std::string damaged = bag;
    damaged[damaged.find("WPKY") + 20] ^= 1;
    EXPECT_EQ(unlock(*KeyBag::parse(bytesOf(damaged)), bytesOf("x")).result, Unlock::Open);
    std::string many = bag;
    for (int i = 0; i < 1000; ++i) many += item("UUID", "u") + item("WRAP", number(2));
    EXPECT_LT(KeyBag::parse(bytesOf(many))->classes.size(), 100U);
    for (const std::string& none :
         {std::string(), std::string("VERS"), item("UUID", "") + "SALT\xff\xff\xff\xff",
          item("UUID", "x") + item("UUID", "y") + item("WPKY", "z")})
        EXPECT_FALSE(KeyBag::parse(bytesOf(none)));
}

TEST(KeyWrap, UnwrapsTheExampleOfTheStandardAlone) {
    // RFC 3394, 4.6.
    const auto wrapping = unhex("000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F");
    const auto plain = unhex("00112233445566778899AABBCCDDEEFF000102030405060708090A0B0C0D0E0F");
    auto wrapped =
        unhex("28C9F404C4B810F4CBCCB35CFB87F8263F5786E2D80ED326CBC7F0E71A99F43BFB988B9B7A02DD21");
    const auto key = unwrapKey(bytesOf(wrapping), bytesOf(wrapped));
    ASSERT_TRUE(key);
    EXPECT_TRUE(std::ranges::equal(key->bytes(), bytesOf(plain)));
    EXPECT_FALSE(unwrapKey(bytesOf(wrapping), bytesOf(wrapped.substr(0, 39))));
    EXPECT_FALSE(unwrapKey(bytesOf(wrapping.substr(1)), bytesOf(wrapped)));
    wrapped[7] ^= 1;
    EXPECT_FALSE(unwrapKey(bytesOf(wrapping), bytesOf(wrapped)));
}

TEST(FileCiphers, TellTheLengthByThePadding) {
    const TempFolder folder;
    SampleKeys keys(2, "x", std::nullopt);
    const auto key = keys.makeKey(4);
    const auto bag = KeyBag::parse(bytesOf(keys.bag()));
    const auto opened = unlock(*bag, bytesOf("x")).keys;
    const auto fileKey = opened->open(bytesOf(key.wrapped));
    ASSERT_TRUE(fileKey);
    EXPECT_FALSE(opened->open(bytesOf("\x09" + key.wrapped.substr(1)))) << "a class that is locked";
    EXPECT_FALSE(opened->open(bytesOf("\x03" + key.wrapped.substr(1)))) << "of another class";
    EXPECT_FALSE(opened->open(bytesOf("\x04")));

    std::size_t count = 0;
    const std::size_t large = (std::size_t{5} << 20) + 3;  // more than one piece
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{16},
                                   std::size_t{33}, large}) {
        std::string plain(size, '\0');
        for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<char>(i * 2654435761U >> 13);
        const auto content = SampleKeys::encrypt(key, plain);
        const FileCipher cipher(bytesOf(content), fileKey->bytes());
        EXPECT_EQ(cipher.size(), size);
        EXPECT_TRUE(cipher.isSound());
        const auto target = folder / std::to_string(++count);
        EXPECT_TRUE(cipher.decryptTo(target));
        EXPECT_TRUE(readWholeFile(target) == plain) << size;
        EXPECT_EQ(cipher.decryptTo(target).end, FileCopy::End::Unwritten) << "it is there already";
        std::array<std::uint8_t, 20> head{};
        const auto read = cipher.readHead(head);
        EXPECT_EQ(read, std::min<std::size_t>(size, head.size()));
        EXPECT_TRUE(std::ranges::equal(Bytes(head).first(read), bytesOf(plain.substr(0, read))));
        EXPECT_EQ(cipher.decryptTo(folder / "none", {{}, [] { return true; }}).end,
                  FileCopy::End::Cancelled);
        EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    }
    // Without sound padding all whole blocks are kept.
    const auto padded = SampleKeys::encrypt(key, std::string(40, 'x'));
    for (const auto& [size, kept] : {std::pair{32U, 32U}, {47U, 32U}, {5U, 0U}, {0U, 0U}}) {
        const auto cut = padded.substr(0, size);
        const FileCipher cipher(bytesOf(cut), fileKey->bytes());
        EXPECT_EQ(cipher.size(), kept);
        EXPECT_EQ(cipher.isSound(), size == 0);
    }
}

}  // namespace
}  // namespace salvor
