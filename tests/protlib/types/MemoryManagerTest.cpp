#include "protlib/types/MemoryManager.h"

#include <gtest/gtest.h>

#include <string>

namespace {

MemoryType typeNamed(char const* name, int maxIndex = 0) {
    MemoryType type;
    type.setName(name);
    type.setMaxIndex(maxIndex);
    return type;
}

TEST(MemoryType, NewOneAcceptsTheTypesOneToTwentyTwoAndCanDoNothing) {
    MemoryType const type;
    EXPECT_EQ(type.getName(), "");
    EXPECT_EQ(type.getNaturalType(), 1);
    EXPECT_EQ(type.getIcomTypes(), 0x3fffff);
    EXPECT_FALSE(type.isSwap2());
    EXPECT_FALSE(type.isSwap4());
    EXPECT_FALSE(type.isBitWrite());
    EXPECT_FALSE(type.isBitArrayWrite());
    EXPECT_FALSE(type.isReadOnly());
    EXPECT_FALSE(type.isWriteOnly());
    EXPECT_FALSE(type.isInDatagram());
    EXPECT_FALSE(type.isInternalConversion());
    EXPECT_EQ(type.getBlockReadCount(), 0);
    EXPECT_EQ(type.getBlockWriteCount(), 0);
    EXPECT_EQ(type.getMinIndex(), 0);
    EXPECT_EQ(type.getMaxIndex(), 0);
}

TEST(MemoryType, SettersStoreWhatTheyAreGiven) {
    MemoryType type;
    type.setName("MB");
    type.setNaturalType(ICU_UNSIGNED_INT);
    type.setIcomTypes(0x40);
    type.setMinIndex(-5);
    type.setMaxIndex(0x7fffffff);
    type.setBlockReadCount(-3);
    type.setBlockWriteCount(12);
    EXPECT_EQ(type.getName(), "MB");
    EXPECT_EQ(type.getNaturalType(), 7);
    EXPECT_EQ(type.getIcomTypes(), 0x40);
    EXPECT_EQ(type.getMinIndex(), -5);
    EXPECT_EQ(type.getMaxIndex(), 2147483647);
    EXPECT_EQ(type.getBlockReadCount(), -3);
    EXPECT_EQ(type.getBlockWriteCount(), 12);
}

/** The eight flags in one number, so that a setter that changes another flag is noticed. */
unsigned flagsOf(MemoryType const& type) {
    return (type.isSwap2() ? 1U : 0U) | (type.isSwap4() ? 2U : 0U) | (type.isBitWrite() ? 4U : 0U) |
           (type.isBitArrayWrite() ? 8U : 0U) | (type.isReadOnly() ? 16U : 0U) | (type.isWriteOnly() ? 32U : 0U) |
           (type.isInDatagram() ? 64U : 0U) | (type.isInternalConversion() ? 128U : 0U);
}

TEST(MemoryType, EachFlagIsSetAndResetAlone) {
    MemoryType type;
    type.setSwap2(true);
    EXPECT_EQ(flagsOf(type), 1U);
    type.setSwap4(true);
    EXPECT_EQ(flagsOf(type), 3U);
    type.setBitWrite(true);
    EXPECT_EQ(flagsOf(type), 7U);
    type.setBitArrayWrite(true);
    EXPECT_EQ(flagsOf(type), 15U);
    type.setReadOnly(true);
    EXPECT_EQ(flagsOf(type), 31U);
    type.setInDatagram(true);
    EXPECT_EQ(flagsOf(type), 95U);
    type.setInternalConversion(true);
    EXPECT_EQ(flagsOf(type), 223U);
    type.setSwap2(false);
    type.setReadOnly(false);
    EXPECT_EQ(flagsOf(type), 206U);
}

TEST(Model, NewOneHasItsNameAndNoLimits) {
    Model const model("Intel");
    EXPECT_EQ(model.getName(), "Intel");
    EXPECT_EQ(model.getMaxDatagramItems(), 0);
    EXPECT_EQ(model.getMaxDatagramLength(), 0);
    EXPECT_EQ(model.getMemoryType("M"), nullptr);
}

TEST(Model, LimitsAreStoredApart) {
    Model model("Intel");
    model.setMaxDatagramItems(90);
    model.setMaxDatagramLength(1024);
    EXPECT_EQ(model.getMaxDatagramItems(), 90);
    EXPECT_EQ(model.getMaxDatagramLength(), 1024);
}

TEST(Model, SecondMemoryTypeOfTheSameNameIsRefused) {
    Model model("Intel");
    EXPECT_TRUE(model.addMemoryType(typeNamed("M", 1)));
    EXPECT_FALSE(model.addMemoryType(typeNamed("M", 2)));
    EXPECT_EQ(model.getMemoryType("M")->getMaxIndex(), 1);
    EXPECT_TRUE(model.addMemoryType(typeNamed("m", 3)));
    EXPECT_TRUE(model.addMemoryType(typeNamed("MB", 4)));
    EXPECT_EQ(model.getMemoryType("m")->getMaxIndex(), 3);
}

TEST(Model, MemoryTypeIsCopied) {
    Model model("Intel");
    MemoryType type = typeNamed("M", 1);
    EXPECT_TRUE(model.addMemoryType(type));
    type.setMaxIndex(99);
    EXPECT_EQ(model.getMemoryType("M")->getMaxIndex(), 1);
}

struct TwoModels : testing::Test {
    TwoModels() {
        Model intel("Intel");
        intel.setMaxDatagramItems(1);
        intel.addMemoryType(typeNamed("M", 11));
        intel.addMemoryType(typeNamed("MB", 12));
        Model motorola("Motorola");
        motorola.setMaxDatagramItems(2);
        motorola.addMemoryType(typeNamed("M", 21));
        manager.addModel(intel);
        manager.addModel(motorola);
    }
    MemoryManager manager;
};

TEST_F(TwoModels, ModelIsFoundByItsExactName) {
    EXPECT_EQ(manager.getModel("Intel")->getMaxDatagramItems(), 1);
    EXPECT_EQ(manager.getModel("Motorola")->getMaxDatagramItems(), 2);
}

TEST_F(TwoModels, UnknownModelNameGivesTheFirstModel) {
    for (char const* const name : {"motorola", "", "Motorol", "Motorola ", "MotorolaX", "INTEL"}) {
        EXPECT_EQ(manager.getModel(name)->getName(), "Intel") << name;
    }
    EXPECT_EQ(manager.getModel(std::string("Motorola\0", 9))->getName(), "Intel");
}

TEST_F(TwoModels, MemoryTypeIsFoundInItsModel) {
    EXPECT_EQ(manager.getMemoryType("Intel", "M")->getMaxIndex(), 11);
    EXPECT_EQ(manager.getMemoryType("Intel", "MB")->getMaxIndex(), 12);
    EXPECT_EQ(manager.getMemoryType("Motorola", "M")->getMaxIndex(), 21);
}

TEST_F(TwoModels, UnknownMemoryTypeIsNull) {
    EXPECT_EQ(manager.getMemoryType("Motorola", "MB"), nullptr);
    EXPECT_EQ(manager.getMemoryType("Intel", "m"), nullptr);
    EXPECT_EQ(manager.getMemoryType("Intel", ""), nullptr);
}

TEST_F(TwoModels, MemoryTypeOfAnUnknownModelIsNullAlthoughTheModelIsNot) {
    EXPECT_NE(manager.getModel("motorola"), nullptr);
    EXPECT_EQ(manager.getMemoryType("motorola", "M"), nullptr);
    EXPECT_EQ(manager.getMemoryType("", "M"), nullptr);
}

TEST_F(TwoModels, SecondModelOfTheSameNameIsKeptButNotFound) {
    Model again("Intel");
    again.setMaxDatagramItems(3);
    again.addMemoryType(typeNamed("Q", 31));
    manager.addModel(again);
    EXPECT_EQ(manager.getModel("Intel")->getMaxDatagramItems(), 1);
    EXPECT_EQ(manager.getMemoryType("Intel", "Q"), nullptr);
    EXPECT_EQ(manager.getMemoryType("Motorola", "M")->getMaxIndex(), 21);
}

TEST(MemoryManager, EmptyOneHasNoModelAtAll) {
    MemoryManager const manager;
    EXPECT_EQ(manager.getModel("Intel"), nullptr);
    EXPECT_EQ(manager.getMemoryType("Intel", "M"), nullptr);
}

TEST(MemoryManager, ModelIsCopied) {
    MemoryManager manager;
    Model model("Intel");
    manager.addModel(model);
    model.setMaxDatagramItems(5);
    EXPECT_EQ(manager.getModel("Intel")->getMaxDatagramItems(), 0);
}

} // namespace
