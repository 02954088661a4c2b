#include "address_books/readers/card_item.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "address_books/readers/item_text.h"
#include "core/text.h"

namespace kelmio {

namespace {

constexpr int kNotPreferred = std::numeric_limits<int>::max();

/// The places of the parts of N and ADR, as RFC 6350, 6.2.2 and 6.3.1, and its forerunners have them.
enum NamePart : std::size_t { Family, Given, Additional, Prefixes, Suffixes };
enum AddressPart : std::size_t { PostBox, Extended, Street, Locality, Region, PostalCode, Country };

/// One line of a card.
struct Property {
  std::string name;
  std::set<std::string> types;
  /// 1 is preferred most.
  int preference = kNotPreferred;
  std::vector<std::string> parts;

  bool Is(std::string_view type) const { return types.count(std::string(type)) > 0; }
  std::string_view Part(std::size_t index) const {
    return index < parts.size() ? std::string_view(parts[index]) : std::string_view();
  }
  /// The value of a property that has no parts: the library parts every value at a semicolon.
  std::string Whole() const {
    std::string whole;
    for (std::size_t index = 0; index < parts.size(); ++index)
      whole += (index > 0 ? ";" : "") + parts[index];
    return whole;
  }
  bool IsEmpty() const {
    return std::all_of(parts.begin(), parts.end(), [](const std::string& part) { return Trimmed(part).empty(); });
  }
};

/// Types come as one parameter each or, in quotes, as a list in one.
void AddTypes(std::set<std::string>& types, std::string_view list) {
  while (!list.empty()) {
    const std::size_t comma = std::min(list.find(','), list.size());
    types.insert(AsciiUpper(Trimmed(list.substr(0, comma))));
    list.remove_prefix(std::min(comma + 1, list.size()));
  }
}

/// From 1 to 100 (RFC 6350, 5.3).
int PreferenceOf(std::string_view text) {
  const int preference = LeadingNumber32(text);
  return preference >= 1 && preference <= 100 ? preference : kNotPreferred;
}

/// The library has null for some texts that a damaged card lacks.
std::string_view TextOf(const char* text) {
  return text != nullptr ? text : std::string_view();
}

Property PropertyOf(EVCardAttribute* attribute) {
  Property property;
  property.name = AsciiUpper(TextOf(e_vcard_attribute_get_name(attribute)));
  for (GList* at = e_vcard_attribute_get_params(attribute); at != nullptr; at = at->next) {
    auto* parameter = static_cast<EVCardAttributeParam*>(at->data);
    const std::string name = AsciiUpper(TextOf(e_vcard_attribute_param_get_name(parameter)));
    for (GList* value = e_vcard_attribute_param_get_values(parameter); value != nullptr; value = value->next) {
      const std::string_view text = TextOf(static_cast<const char*>(value->data));
      if (name == "TYPE")
        AddTypes(property.types, text);
      else if (name == "PREF")
        property.preference = PreferenceOf(text);
    }
  }
  if (property.Is("PREF"))
    property.preference = std::min(property.preference, 1);
  for (GList* at = e_vcard_attribute_get_values_decoded(attribute); at != nullptr; at = at->next) {
    const auto* text = static_cast<const GString*>(at->data);
    if (text != nullptr)
      property.parts.emplace_back(text->str, text->len);
  }
  return property;
}

/// The properties of a card that have content.
class Card {
public:
  explicit Card(EVCard* card) {
    for (GList* at = e_vcard_get_attributes(card); at != nullptr; at = at->next)
      if (Property property = PropertyOf(static_cast<EVCardAttribute*>(at->data)); !property.IsEmpty())
        properties_.push_back(std::move(property));
  }

  /// The one that is preferred most, the first of those, among `name`s that `fits`; null when there is none.
  template <typename Fits> const Property* Best(std::string_view name, Fits fits) const {
    const Property* best = nullptr;
    for (const Property& property : properties_)
      if (property.name == name && fits(property) && (best == nullptr || property.preference < best->preference))
        best = &property;
    return best;
  }
  const Property* Best(std::string_view name) const {
    return Best(name, [](const Property&) { return true; });
  }
  const Property* BestForWork(std::string_view name) const {
    const Property* best = Best(name, [](const Property& property) { return property.Is("WORK"); });
    return best != nullptr ? best : Best(name);
  }
  std::string Text(std::string_view name) const {
    const Property* best = Best(name);
    return best != nullptr ? OneLine(best->Whole()) : std::string();
  }
  bool Says(std::string_view name, std::string_view value) const { return EqualsIgnoringAsciiCase(Text(name), value); }

private:
  std::vector<Property> properties_;
};

/// `text` behind `scheme` ("tel:"), when it begins with that.
std::string_view WithoutScheme(std::string_view text, std::string_view scheme) {
  return EqualsIgnoringAsciiCase(text.substr(0, scheme.size()), scheme) ? text.substr(scheme.size()) : text;
}

/// A number as a person writes it; of a URI (RFC 3966), what stands before its parameters.
std::string NumberOf(const Property* telephone) {
  if (telephone == nullptr)
    return {};
  const std::string whole = OneLine(telephone->Whole());
  const std::string_view number = WithoutScheme(whole, "tel:");
  return std::string(number.size() < whole.size() ? number.substr(0, number.find(';')) : number);
}

void TakeNumbers(const Card& card, AddressItem& item) {
  const auto is_voice = [](const Property& telephone) { return !telephone.Is("FAX") && !telephone.Is("PAGER"); };
  const auto is_landline = [&](const Property& telephone) { return is_voice(telephone) && !telephone.Is("CELL"); };
  const auto best = [&](const auto& fits) { return card.Best("TEL", fits); };

  const Property* home = best([&](const Property& tel) { return is_landline(tel) && tel.Is("HOME"); });
  if (home == nullptr)
    home = best([&](const Property& tel) { return is_landline(tel) && !tel.Is("WORK"); });
  const Property* mobile = best([&](const Property& tel) { return is_voice(tel) && tel.Is("CELL"); });
  const Property* business = best([&](const Property& tel) { return is_landline(tel) && tel.Is("WORK"); });
  if (business == nullptr)
    business = best([&](const Property& tel) { return is_voice(tel) && tel.Is("WORK") && &tel != mobile; });
  const Property* fax = best([](const Property& tel) { return tel.Is("FAX") && tel.Is("WORK"); });
  if (fax == nullptr)
    fax = best([](const Property& tel) { return tel.Is("FAX"); });

  item.HomeTelephoneNumber = NumberOf(home);
  item.MobileTelephoneNumber = NumberOf(mobile);
  item.BusinessTelephoneNumber = NumberOf(business);
  item.BusinessFaxNumber = NumberOf(fax);
}

void TakeAddress(const Card& card, AddressItem& item) {
  const Property* address = card.BestForWork("ADR");
  if (address == nullptr)
    return;
  const auto part = [&](AddressPart index) { return OneLine(address->Part(index), ", "); };
  item.BusinessAddressStreet = Joined({part(Street), part(Extended), part(PostBox)}, ", ");
  item.BusinessAddressCity = part(Locality);
  item.BusinessAddressState = part(Region);
  item.BusinessAddressPostalCode = part(PostalCode);
  item.BusinessAddressCountry = part(Country);
}

std::string NameFromParts(const Card& card) {
  const Property* name = card.Best("N");
  if (name == nullptr)
    return {};
  const auto part = [&](NamePart index) { return OneLine(name->Part(index)); };
  return Joined({part(Prefixes), part(Given), part(Additional), part(Family), part(Suffixes)}, " ");
}

/// Some programs escape the colon too, which no card asks for.
std::string HomePageOf(const Card& card) {
  const Property* page = card.BestForWork("URL");
  std::string text = page != nullptr ? OneLine(page->Whole()) : std::string();
  for (std::size_t at = text.find("\\:"); at != std::string::npos; at = text.find("\\:", at))
    text.erase(at, 1);
  return text;
}

} // namespace

std::optional<AddressItem> ItemOfCard(EVCard* card_of_library) {
  const Card card(card_of_library);
  const Property* organisation = card.Best("ORG");
  const std::string company = organisation != nullptr ? OneLine(organisation->Part(0)) : std::string();
  const std::string email(WithoutScheme(card.Text("EMAIL"), "mailto:"));
  const std::string name = FirstOf({card.Text("FN"), NameFromParts(card), company, card.Text("NICKNAME"), email});

  if (card.Says("KIND", "group") || card.Says("X-ADDRESSBOOKSERVER-KIND", "group") ||
      card.Says("X-EVOLUTION-LIST", "TRUE")) {
    AddressItem group;
    group.FullName = name;
    return group;
  }
  AddressItem item = EmptyItem();
  item.FullName = name;
  item.Email1Address = email;
  item.BusinessHomePage = HomePageOf(card);
  item.JobTitle = card.Text("TITLE");
  item.CompanyName = company;
  TakeNumbers(card, item);
  TakeAddress(card, item);
  return HasContent(item) ? std::optional(std::move(item)) : std::nullopt;
}

} // namespace kelmio
