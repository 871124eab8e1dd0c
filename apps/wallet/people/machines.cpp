#include "command_line/help.h"
#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "people/command.h"
#include "people/machine_named.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/qr_picture.h"
#include "wording/text.h"

#include <cmath>
#include <memory>
#include <vector>

namespace kavio::wallet {

namespace {

using enum Column::Kind;

struct Search {
    std::optional<std::string> code = {};
    /// With its QR code, instead of the code.
    std::optional<std::string> picture = {};
    std::optional<std::string> serial = {};
    std::vector<double> near = {};
    std::optional<std::string> country = {};
    std::optional<std::int64_t> radius = {};
    std::optional<std::int64_t> operatorId = {};
    std::optional<std::int64_t> limit = {};

    bool isCode() const { return code || picture; }
    bool isEmpty() const { return !isCode() && !serial && near.empty() && !limit; }
};

/// Null for the user's own machines.
std::shared_ptr<const MachineFilter> filterOf(const Search& search) {
    if (search.isEmpty()) return nullptr;
    const auto coordinate = [&](std::size_t i) {
        return search.near.empty() ? std::nullopt : std::optional{search.near.at(i)};
    };
    return std::make_shared<const MachineFilter>(MachineFilter{
        .value = search.code,
        .latitude = coordinate(0),
        .longitude = coordinate(1),
        .country = search.country,
        .radius = search.radius,
        .operatorId = search.operatorId,
        .hwSerial = search.serial,
        .limit = search.limit,
    });
}

std::string placeOf(const Machine& machine) {
    const auto city = machine.city.value_or("");
    const auto country = machine.country.value_or("");
    return city.empty() || country.empty() ? city + country : city + ", " + country;
}

std::string notFindable(const Search& search) {
    if (search.picture) return tr("The QR code in '{}' is not a machine's.", printable(*search.picture));
    if (!search.code) return tr("The serial number is empty.");
    return tr("'{}' is neither a machine's code nor the text of a QR code.", printable(*search.code));
}

std::string codeInPicture(const std::string& file) {
    try {
        return textOfQrCode(file, file);
    } catch (const PictureProblem& problem) {
        throw Failure(ExitStatus::REFUSED, problem.what());
    }
}

Machines found(Session& session, Search search) {
    if (search.picture) search.code = codeInPicture(*search.picture);
    const auto filter = filterOf(search);
    try {
        return session.list<Machines>(tr("Looking for machines"), [&](Kavio& kavio) { kavio.getMachines(filter); });
    } catch (const Failure& failure) {
        throw failure.saying(Cause::INVALID_INPUT, notFindable(search));
    }
}

void listMachines(Session& session, const Search& search) {
    const auto machines = found(session, search);
    Table table{{{tr("MACHINE"), NUMBER},
                 {tr("ID"), NUMBER, 5},
                 {tr("NAME")},
                 {tr("OPERATOR"), PROSE, 4},
                 {tr("TYPE"), PROSE, 3},
                 {tr("PLACE"), PROSE, 2},
                 {tr("STATE"), EXACT, 1}}};
    for (const auto& machine : machines) {
        table.add({machine->kavioId == 0 ? "" : fmt::to_string(machine->kavioId), fmt::to_string(machine->id),
                   machine->name.value_or(""), machine->operatorName.value_or(""), machineTypeName(machine->type),
                   placeOf(*machine), machineStateName(*machine)});
    }
    session.show(table, tr("No machines were found."));
}

void listProducts(Session& session, const MachineName& name) {
    const auto machine = machineNamed(session, name);
    const auto products = session.list<Products>(tr("Asking for its products"),
                                                 [&](Kavio& kavio) { kavio.getMachineProducts(machine->id); });
    const auto currency = currencyOfCountry(machine->country.value_or(""));
    Table table{{{tr("CODE"), NUMBER},
                 {tr("NAME")},
                 {tr("DEPARTMENT"), PROSE, 2},
                 {tr("PRICE"), NUMBER},
                 {tr("NOTE"), EXACT, 1}}};
    for (const auto& product : products) {
        table.add({product->codeInMap ? fmt::to_string(*product->codeInMap) : "", product->name.value_or(""),
                   product->department.value_or(""), priceText(*product, currency),
                   product->vendOut ? tr("sold out") : ""});
    }
    session.show(table, tr("{} lists no products.", titleOf(*machine)));
}

}  // namespace

void addMachineName(CLI::App& line, MachineName& name) {
    auto* const code = line.add_option("MACHINE", name.code, tr("The machine's code, or the text of its QR code"));
    line.add_option("--qr", name.picture, tr("Picture of the machine's QR code, instead of MACHINE"))
        ->type_name("FILE")
        ->excludes(code);
    line.parse_complete_callback([code, &line] {
        if (code->empty() && line.get_option("--qr")->empty()) throw CLI::RequiredError(tr("MACHINE or --qr"));
    });
}

std::shared_ptr<const Machine> machineNamed(Session& session, const MachineName& name) {
    const Search search{.code = name.code, .picture = name.picture};
    const auto machines = found(session, search);
    if (machines.size() == 1) return machines.front();
    if (machines.empty() && name.picture) throw Failure(ExitStatus::REFUSED, notFindable(search));
    const auto shown = printable(name.picture.value_or(name.code));
    throw Failure(ExitStatus::REFUSED, machines.empty() ? tr("There is no machine {}.", shown)
                                                        : trn("{} matches {} machine.", "{} matches {} machines.",
                                                              machines.size(), shown, machines.size()));
}

Command machinesCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("machines", tr("Find machines; without options, those that you have used"));
    const auto search = std::make_shared<Search>();
    auto* const code = line->add_option("--code", search->code, tr("The machine's code, or the text of its QR code"));
    auto* const picture = line->add_option("--qr", search->picture, tr("Picture of the machine's QR code"))
                              ->type_name("FILE")
                              ->excludes(code);
    auto* const serial =
        line->add_option("--serial", search->serial, tr("Serial number of the machine's payment device"))
            ->excludes(code)
            ->excludes(picture);
    auto* const near = line->add_option("--near", search->near, tr("Position in degrees, such as 48.14,11.58"))
                           ->type_name("LAT,LON")
                           ->delimiter(',')
                           ->expected(2)
                           ->check(command_line::coordinate())
                           ->excludes(code)
                           ->excludes(picture)
                           ->excludes(serial);
    line->add_option("--radius", search->radius, tr("Greatest distance from the position, in metres"))
        ->transform(command_line::wholeNumber())
        ->needs(near);
    line->add_option("--country", search->country, tr("Country of the position, such as DE"))->needs(near);
    line->add_option("--operator", search->operatorId,
                     tr("Only machines of this operator; requires --near, --code or --qr"))
        ->transform(command_line::wholeNumber());
    line->add_option("--limit", search->limit, tr("Maximum number of machines"))->transform(command_line::listLength());
    line->parse_complete_callback([search] {
        if (search->operatorId && !search->isCode() && search->near.empty())
            throw CLI::ValidationError("--operator", tr("requires --near, --code or --qr"));
        if (!search->near.empty() && (std::abs(search->near.at(0)) > 90 || std::abs(search->near.at(1)) > 180))
            throw CLI::ValidationError("--near", tr("a latitude is from -90 to 90, a longitude from -180 to 180"));
    });
    command_line::addExamples(*line, {"", "--near 52.5219,13.4132 --radius 500", "--code 42100107", "--qr photo.jpg"});
    return {line, [search](Session& session) { listMachines(session, *search); }};
}

Command productsCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("products", tr("List what a machine sells"));
    const auto name = std::make_shared<MachineName>();
    addMachineName(*line, *name);
    command_line::addExamples(*line, {"42100107", "--qr photo.jpg"});
    return {line, [name](Session& session) { listProducts(session, *name); }};
}

}  // namespace kavio::wallet
