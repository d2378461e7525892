#include <gtest/gtest.h>

#include "fencing/System.Beacon.Fencing.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

constexpr const char* UUID = "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}";
constexpr const char* LowerUUID = "{2f234454-cf6d-4a0f-adf2-f4911ba9ffa6}";
constexpr const char* Namespace = "00112233445566778899";

/// An item in a list that counts its notifications.
struct TListed {
  TListed() {
    List.SetOnChange([this](TObject*) { ++Notifications; });
  }
  std::string Get(const char* AProperty) {
    return FindProperty(TBeaconItem::ClassInfo(), AProperty)->Get(Item).As<std::string>();
  }
  void Set(const char* AProperty, const char* AText) {
    const TValue Value = TValue::From(std::string(AText));
    FindProperty(TBeaconItem::ClassInfo(), AProperty)->Set(Item, Value);
  }

  TBeaconInZoneList List{nullptr};
  TBeaconItem& Item = *List.Add();
  int Notifications = 0;
};

TEST(TBeaconItem, KeepsWhatItPrintsAndRefusesOtherTextsWithoutNotification) {
  constexpr const char* BadUUID =
      "'' is not a valid GUID value; it looks like {00112233-4455-6677-8899-AABBCCDDEEFF}";
  constexpr const char* Manufacturer = "Manufacturer ID should be -1 or a four digits hex value";
  struct TCase {
    const char* Property;
    std::vector<std::pair<const char*, const char*>> Printed;  // by text
    const char* Message;
    std::vector<const char*> Refused;
  };
  for (const TCase& C :
       {TCase{"UUID", {{LowerUUID, UUID}}, BadUUID, {""}},
        {"ManufacturerID",
         {{"-1", "-1"}, {"0", "0"}, {"A", "A"}, {"004C", "004C"}, {"ffff", "ffff"}},
         Manufacturer,
         {"", "12345", "-2", "G1", "+1", " 1", "$1"}},
        {"EddyNamespace",
         {{"aabbccddeeff00112233", "AABBCCDDEEFF00112233"}},
         "Invalid Eddystone namespace",
         {"", "0011223344556677889", "001122334455667788990", "G0112233445566778899"}},
        {"EddyInstance",
         {{"aAbBcC001122", "AABBCC001122"}},
         "Invalid Eddystone instance",
         {"", "00112233445", "0011223344556", " 01122334455"}}}) {
    TListed Listed;
    for (const auto& [Text, Printed] : C.Printed) {
      Listed.Set(C.Property, Text);
      EXPECT_EQ(Listed.Get(C.Property), Printed);
    }
    Listed.Notifications = 0;
    for (const char* Text : C.Refused)
      EXPECT_EQ(Raised<EGeneralError>([&] { Listed.Set(C.Property, Text); }), C.Message) << Text;
    EXPECT_EQ(Listed.Get(C.Property), C.Printed.back().second);
    EXPECT_EQ(Listed.Notifications, 0);
  }
}

TEST(TBeaconItem, NotifiesAsOftenAsEachSetterPromises) {
  const std::tuple<const char*, void (*)(TBeaconItem&), int, int> Cases[] = {
      {"UUID", [](TBeaconItem& A) { A.SetUUID(UUID); }, 1, 0},
      {"UUID in lower case", [](TBeaconItem& A) { A.SetUUID(LowerUUID); }, 1, 1},
      {"Major", [](TBeaconItem& A) { A.SetMajor(7); }, 1, 0},
      {"Minor", [](TBeaconItem& A) { A.SetMinor(7); }, 1, 0},
      {"EddyNamespace", [](TBeaconItem& A) { A.SetEddyNamespace(Namespace); }, 1, 1},
      {"EddyInstance", [](TBeaconItem& A) { A.SetEddyInstance("001122334455"); }, 1, 1},
      {"DisplayName", [](TBeaconItem& A) { A.SetDisplayName("Door"); }, 2, 1},
      {"KindofBeacon", [](TBeaconItem& A) { A.SetKindofBeacon(TKindofBeacon::iBeacon); }, 0, 0},
      {"ManufacturerID", [](TBeaconItem& A) { A.SetManufacturerID("4C"); }, 0, 0},
      {"GUID", [](TBeaconItem& A) { A.SetGUID(StringToGUID(UUID)); }, 0, 0},
      {"EddyUID", [](TBeaconItem& A) { A.SetEddyUID({.Namespace = {1}}); }, 0, 0}};
  for (const auto& [What, Set, First, Again] : Cases) {
    TListed Listed;
    Set(Listed.Item);
    EXPECT_EQ(std::exchange(Listed.Notifications, 0), First) << What;
    Set(Listed.Item);
    EXPECT_EQ(Listed.Notifications, Again) << What << " again";
  }
}

TEST(TBeaconItem, AssignsEverythingButNameAndKindAndNotifiesForTheSource) {
  TListed From, To;
  TObject Context;
  From.Item.SetUUID(UUID);
  From.Item.SetMajor(1);
  From.Item.SetMinor(2);
  From.Item.SetEddyUID({.Namespace = {3}, .Instance = {4}});
  From.Item.SetContext(&Context);
  From.Item.SetDisplayName("Door");
  From.Item.SetKindofBeacon(TKindofBeacon::Eddystone);
  To.Item.SetManufacturerID("4C");
  From.Notifications = 0;

  To.Item.Assign(&From.Item);

  EXPECT_EQ(To.Item.GetUUID(), UUID);
  EXPECT_EQ(To.Item.GetMajor(), 1);
  EXPECT_EQ(To.Item.GetMinor(), 2);
  EXPECT_EQ(To.Item.GetEddyUID(), From.Item.GetEddyUID());
  EXPECT_EQ(To.Item.GetManufacturerID(), "") << "not checked, its setter would refuse it";
  EXPECT_EQ(To.Item.GetContext(), &Context);
  EXPECT_EQ(To.Item.GetDisplayName(), "TBeaconItem");
  EXPECT_EQ(To.Item.GetKindofBeacon(), TKindofBeacon::iBeaconAltBeacon);
  EXPECT_EQ(From.Notifications, 1);
  EXPECT_EQ(To.Notifications, 3) << "UUID, major and minor go through setters";
}

}  // namespace
}  // namespace System::Beacon::Fencing
