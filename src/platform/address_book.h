// Address books that other programs keep.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace kelmio {

/// One contact of an address book as UTF-8. A property that can't be read is nothing; one that is read and has no
/// content is an empty text.
struct AddressItem {
  std::optional<std::string> FullName;
  std::optional<std::string> HomeTelephoneNumber;
  std::optional<std::string> MobileTelephoneNumber;
  std::optional<std::string> Email1Address;
  std::optional<std::string> BusinessHomePage;
  std::optional<std::string> BusinessTelephoneNumber;
  std::optional<std::string> BusinessFaxNumber;
  std::optional<std::string> JobTitle;
  std::optional<std::string> CompanyName;
  std::optional<std::string> BusinessAddressStreet;
  std::optional<std::string> BusinessAddressCity;
  std::optional<std::string> BusinessAddressState;
  std::optional<std::string> BusinessAddressPostalCode;
  std::optional<std::string> BusinessAddressCountry;
};

/// In the order in which a contact is written.
inline constexpr std::array<std::optional<std::string> AddressItem::*, 14> kAddressItemProperties = {
    &AddressItem::FullName,
    &AddressItem::HomeTelephoneNumber,
    &AddressItem::MobileTelephoneNumber,
    &AddressItem::Email1Address,
    &AddressItem::BusinessHomePage,
    &AddressItem::BusinessTelephoneNumber,
    &AddressItem::BusinessFaxNumber,
    &AddressItem::JobTitle,
    &AddressItem::CompanyName,
    &AddressItem::BusinessAddressStreet,
    &AddressItem::BusinessAddressCity,
    &AddressItem::BusinessAddressState,
    &AddressItem::BusinessAddressPostalCode,
    &AddressItem::BusinessAddressCountry,
};

/// An address book that has been opened. User interface thread only.
class AddressBook {
public:
  virtual ~AddressBook() = default;
  virtual std::size_t Count() const = 0;
  /// `index` from 0, below `Count`.
  virtual AddressItem Item(std::size_t index) = 0;
};

/// Where address books come from. User interface thread only. Pending events run while an address book is opened;
/// none of the calls waits longer than some seconds for a service that doesn't answer.
class AddressBooks {
public:
  virtual ~AddressBooks() = default;
  /// Whether the desktop's address book service is there.
  virtual bool DesktopAnswers() = 0;
  /// All address books of the desktop's service as one; null when it doesn't answer.
  virtual std::unique_ptr<AddressBook> OpenDesktop() = 0;
  /// A file of vCards, or an address book that a mail program has exported as comma-separated values; null when the
  /// file can't be read or is neither.
  virtual std::unique_ptr<AddressBook> OpenFile(const std::string& path) = 0;
};

} // namespace kelmio
