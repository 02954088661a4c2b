#include "address_books/readers/csv_file.h"

#include <csv.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/text.h"

namespace kelmio {

namespace {

/// Names of columns in small letters, the one that is wanted most in front.
using Columns = std::vector<std::string_view>;

struct Choice {
  std::optional<std::string> AddressItem::*property;
  Columns columns;
};

const std::vector<Choice> kChoices = {
    {&AddressItem::FullName, {"display name", "name", "full name"}},
    {&AddressItem::HomeTelephoneNumber, {"home phone", "home phone 2", "primary phone", "other phone"}},
    {&AddressItem::MobileTelephoneNumber, {"mobile phone", "mobile number"}},
    {&AddressItem::Email1Address,
     {"e-mail address", "primary email", "e-mail 1 - value", "email address", "e-mail 2 address", "secondary email"}},
    {&AddressItem::BusinessHomePage,
     {"business web page", "web page", "web page 1", "website 1 - value", "web page 2", "personal web page"}},
    {&AddressItem::BusinessTelephoneNumber, {"business phone", "work phone", "business phone 2", "company main phone"}},
    {&AddressItem::BusinessFaxNumber, {"business fax", "fax number", "home fax", "other fax"}},
    {&AddressItem::JobTitle, {"job title", "organization title", "organization 1 - title"}},
    {&AddressItem::CompanyName, {"company", "organization", "organization name", "organization 1 - name"}},
};

/// A whole name from its parts, in the order in which they are spoken.
const std::vector<Columns> kNameParts = {
    {"title", "name prefix"},     {"first name", "given name"}, {"middle name", "additional name"},
    {"last name", "family name"}, {"suffix", "name suffix"},
};
const Columns kOtherNames = {"nickname", "file as", "e-mail display name"};

struct AddressColumns {
  Columns street;
  Columns city;
  Columns state;
  Columns postal_code;
  Columns country;
};

/// The first address with content counts, so those of the business come first.
const std::vector<AddressColumns> kAddresses = {
    {{"business street", "business street 2", "business street 3", "business po box"},
     {"business city"},
     {"business state"},
     {"business postal code"},
     {"business country/region", "business country"}},
    {{"work address", "work address 2"}, {"work city"}, {"work state"}, {"work zipcode"}, {"work country"}},
    {{"home street", "home street 2", "home street 3", "home po box"},
     {"home city"},
     {"home state"},
     {"home postal code"},
     {"home country/region", "home country"}},
    {{"home address", "home address 2"}, {"home city"}, {"home state"}, {"home zipcode"}, {"home country"}},
    {{"address 1 - street", "address 1 - extended address", "address 1 - po box"},
     {"address 1 - city"},
     {"address 1 - region"},
     {"address 1 - postal code"},
     {"address 1 - country"}},
};

/// Google Contacts has a pair of a kind and a number for each telephone of its busiest contact.
constexpr std::string_view kFirstLabelledPhone = "phone 1 - value";
std::string LabelledPhone(int number, std::string_view what) {
  return "phone " + std::to_string(number) + " - " + std::string(what);
}

std::unordered_set<std::string_view> KnownNames() {
  std::unordered_set<std::string_view> names = {kFirstLabelledPhone};
  const auto add = [&](const Columns& columns) { names.insert(columns.begin(), columns.end()); };
  add(kOtherNames);
  for (const Choice& choice : kChoices)
    add(choice.columns);
  for (const Columns& part : kNameParts)
    add(part);
  for (const AddressColumns& address : kAddresses)
    for (const Columns& columns : {address.street, address.city, address.state, address.postal_code, address.country})
      add(columns);
  return names;
}

class Table {
public:
  explicit Table(const std::vector<std::string>& head) {
    for (std::size_t column = 0; column < head.size(); ++column)
      columns_.emplace(AsciiLower(Trimmed(head[column])), column);
  }

  /// How many of the columns have a name that stands for a property.
  std::size_t KnownColumns() const {
    const std::unordered_set<std::string_view> names = KnownNames();
    return static_cast<std::size_t>(std::count_if(columns_.begin(), columns_.end(),
                                                  [&](const auto& column) { return names.count(column.first) > 0; }));
  }

  AddressItem Item(const std::vector<std::string>& row) const {
    AddressItem item = EmptyItem();
    for (const Choice& choice : kChoices)
      item.*choice.property = First(row, choice.columns);
    TakeLabelledPhones(row, item);
    TakeAddress(row, item);
    if (item.FullName->empty())
      item.FullName = FirstOf({Name(row), *item.CompanyName, First(row, kOtherNames), *item.Email1Address});
    return item;
  }

private:
  std::string Text(const std::vector<std::string>& row, const std::string& name,
                   std::string_view line_break = " ") const {
    const auto column = columns_.find(name);
    return column != columns_.end() && column->second < row.size() ? OneLine(row[column->second], line_break)
                                                                   : std::string();
  }

  std::string First(const std::vector<std::string>& row, const Columns& names) const {
    for (const std::string_view name : names)
      if (std::string text = Text(row, std::string(name)); !text.empty())
        return text;
    return {};
  }

  std::string Name(const std::vector<std::string>& row) const {
    std::string name;
    for (const Columns& part : kNameParts)
      name = Joined({name, First(row, part)}, " ");
    return name;
  }

  void TakeAddress(const std::vector<std::string>& row, AddressItem& item) const {
    for (const AddressColumns& address : kAddresses) {
      std::string street;
      for (const std::string_view name : address.street)
        street = Joined({street, Text(row, std::string(name), ", ")}, ", ");
      item.BusinessAddressStreet = street;
      item.BusinessAddressCity = First(row, address.city);
      item.BusinessAddressState = First(row, address.state);
      item.BusinessAddressPostalCode = First(row, address.postal_code);
      item.BusinessAddressCountry = First(row, address.country);
      if (!Joined({street, *item.BusinessAddressCity, *item.BusinessAddressPostalCode}, "").empty())
        return;
    }
  }

  void TakeLabelledPhones(const std::vector<std::string>& row, AddressItem& item) const {
    const auto take = [](std::optional<std::string>& property, const std::string& number) {
      if (property->empty())
        property = number;
    };
    for (int phone = 1; columns_.count(LabelledPhone(phone, "value")) > 0; ++phone) {
      // Several numbers of one kind share a field.
      std::string number = Text(row, LabelledPhone(phone, "value"));
      number = std::string(Trimmed(number.substr(0, number.find(":::"))));
      if (number.empty())
        continue;
      const std::string kind = AsciiLower(First(row, {LabelledPhone(phone, "label"), LabelledPhone(phone, "type")}));
      const auto has = [&](std::string_view word) { return kind.find(word) != std::string::npos; };
      if (has("fax"))
        take(item.BusinessFaxNumber, number);
      else if (has("mobile"))
        take(item.MobileTelephoneNumber, number);
      else if (has("work"))
        take(item.BusinessTelephoneNumber, number);
      else if (!has("pager"))
        take(item.HomeTelephoneNumber, number);
    }
  }

  std::unordered_map<std::string, std::size_t> columns_;
};

/// Rows as the library finds them.
class Rows {
public:
  explicit Rows(const ItemSink& take) : take_(take) {}

  void Field(std::string field) { row_.push_back(std::move(field)); }

  void EndRow() {
    const std::vector<std::string> row = std::exchange(row_, {});
    if (!table_) {
      table_.emplace(row);
      known_ = table_->KnownColumns() >= 2;
    } else if (known_) {
      if (const AddressItem item = table_->Item(row); HasContent(item))
        take_(item);
    }
  }

  /// Whether the head line, once it has been read, is one of an address book.
  bool Known() const { return known_; }
  bool HeadRead() const { return table_.has_value(); }

private:
  const ItemSink& take_;
  std::optional<Table> table_;
  bool known_ = false;
  std::vector<std::string> row_;
};

constexpr std::size_t kPieceBytes = 65536;

/// What parts the columns, by what the head line has most of.
char DelimiterOf(const std::string& text) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(text.find_first_of("\r\n"), text.size()));
  const auto count = [&](char candidate) { return std::count(text.begin(), end, candidate); };
  char best = ',';
  for (const char candidate : {';', '\t'})
    if (count(candidate) > count(best))
      best = candidate;
  return best;
}

} // namespace

bool ReadCsv(const std::string& text, const ItemSink& take) {
  csv_parser parser;
  if (csv_init(&parser, 0) != 0)
    return false;
  csv_set_delim(&parser, static_cast<unsigned char>(DelimiterOf(text)));
  Rows rows(take);
  const auto field = [](void* bytes, std::size_t count, void* target) {
    static_cast<Rows*>(target)->Field(std::string(static_cast<const char*>(bytes), count));
  };
  const auto end_row = [](int, void* target) { static_cast<Rows*>(target)->EndRow(); };
  // In pieces, so that a large file of another kind is left after its first line.
  std::string_view rest = text;
  while (!rest.empty() && (rows.Known() || !rows.HeadRead())) {
    const std::string_view piece = rest.substr(0, kPieceBytes);
    if (csv_parse(&parser, piece.data(), piece.size(), field, end_row, &rows) != piece.size())
      break;
    rest.remove_prefix(piece.size());
  }
  csv_fini(&parser, field, end_row, &rows);
  csv_free(&parser);
  return rows.Known();
}

} // namespace kelmio
