// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Codes.h"

#include <array>
#include <vector>

namespace
{
constexpr unsigned FM = 1; // Fanuc mill
constexpr unsigned FL = 2; // Fanuc lathe
constexpr unsigned OM = 4; // Okuma mill
constexpr unsigned OL = 8; // Okuma lathe
constexpr unsigned Fanuc = FM | FL;
constexpr unsigned Mills = FM | OM;
constexpr unsigned Lathes = FL | OL;
constexpr unsigned All = Fanuc | OM | OL;

struct Row {
    unsigned controls;
    std::vector<int> numbers; // tenths: 541 is G54.1
    Action action;
    ModalGroup group = ModalGroup::Motion;
};

// Only codes that mean the same on every model we know of. What is missing here is shown as not understood.
const std::vector<Row> gCodes{
    {All, {0, 10, 20, 30}, Action::Modal, ModalGroup::Motion},
    {FM, {330}, Action::Modal, ModalGroup::Motion},
    {FL, {320, 340}, Action::Modal, ModalGroup::Motion},
    {All, {170, 180, 190}, Action::Modal, ModalGroup::Plane},
    {Fanuc | OM, {200, 210}, Action::Modal, ModalGroup::Units},
    {Mills | OL, {900, 910}, Action::Modal, ModalGroup::Distance},
    {FM, {930}, Action::Modal, ModalGroup::FeedMode},
    {Mills | OL, {940, 950}, Action::Modal, ModalGroup::FeedMode},
    {FL, {980, 990}, Action::Modal, ModalGroup::FeedMode},
    {FM, {980, 990}, Action::Modal, ModalGroup::ReturnLevel},
    {Mills, {610, 640}, Action::Modal, ModalGroup::PathMode},
    {FM, {620, 630}, Action::Modal, ModalGroup::PathMode},
    {Fanuc, {540, 541, 550, 560, 570, 580, 590}, Action::Modal, ModalGroup::WorkOffset},
    {OM, {150}, Action::OffsetByH},
    {All, {400, 410, 420}, Action::Modal, ModalGroup::CutterComp},
    {FM, {430, 431, 434, 435, 440, 490}, Action::Modal, ModalGroup::ToolLength},
    {OM, {530, 540, 550, 560, 570, 580, 590}, Action::Modal, ModalGroup::ToolLength},
    {OL, {130, 140}, Action::Modal, ModalGroup::Turret},
    {All, {960, 970}, Action::Modal, ModalGroup::SpindleMode},
    {All, {40}, Action::Data},
    {Fanuc, {220, 230}, Action::Data}, // stored stroke limits
    {OM, {710}, Action::Data},         // return level of fixed cycles
    {Mills, {90, 600}, Action::Ignored},
    {FL, {90}, Action::Ignored},
    {Fanuc, {110, 670}, Action::Ignored}, // end of data setting, of a modal call
    {OL, {750, 760}, Action::Ignored},
    {Fanuc, {100}, Action::Stores},
    {Fanuc, {280, 300, 301}, Action::Reference},
    {Fanuc, {270, 290, 310, 370, 530}, Action::Lost},
    {FM, {450, 460, 470, 480}, Action::Lost}, // moves longer or shorter by an offset
    {FL, {360}, Action::Lost},
    {OM, {160, 310}, Action::Lost},
    {FM, {531}, Action::AllLost},
    {OM, {300}, Action::AllLost},
    {OL, {200, 210, 310, 320, 330, 710, 720, 730, 740, 770, 780, 850, 860, 870, 880}, Action::AllLost},
    {Fanuc, {520}, Action::LocalZero},
    {Mills, {920}, Action::ZeroOrLimit},
    {Lathes, {500}, Action::ZeroOrLimit},
    {Fanuc, {650, 660, 661}, Action::Call},
    {Mills, {730, 740, 760, 810, 820, 830, 840, 850, 860, 870, 880, 890}, Action::Cycle},
    {OM, {2740, 2840}, Action::Cycle},
    {FL, {830, 840, 850, 870, 880, 890}, Action::Cycle},
    {OL, {1810, 1820, 1830, 1840, 1850, 1890}, Action::Cycle},
    {Fanuc | OM | OL, {800}, Action::CycleEnd},
    {OL, {1800}, Action::CycleEnd},
    {FL, {900, 920, 940}, Action::Turning},
    {FL, {700, 740, 750, 760}, Action::ReturnsAfter},
    {FL, {710, 720, 730}, Action::Contour},
    {OL, {810, 820, 830}, Action::ShapeBegin},
    {FM, {160, 510, 511, 680, 682}, Action::TransformOn},
    {FM, {150, 500, 501, 690}, Action::TransformOff},
    {FL, {680}, Action::TransformOn},
    {FL, {690}, Action::TransformOff},
    {OM, {110, 510}, Action::TransformOn},
    {OM, {100, 500}, Action::TransformOff},
};

const std::vector<Row> mCodes{
    {All, {0, 10, 480, 490}, Action::Ignored}, // stops and overrides
    {All, {20, 300}, Action::End},
    {Fanuc, {990}, Action::End},
    {All, {30, 40, 50, 190}, Action::Modal, ModalGroup::Spindle},
    {Mills, {60}, Action::ToolChange},
    {All, {70}, Action::Modal, ModalGroup::Mist},
    {All, {80}, Action::Modal, ModalGroup::Flood},
    {All, {90}, Action::CoolantOff},
    {Fanuc, {980}, Action::Call},
    {OM, {520, 530, 540}, Action::Modal, ModalGroup::ReturnLevel},
};

constexpr int codeCount = 4000; // tenths

struct Table {
    std::array<Meaning, codeCount> meanings;

    Table(const std::vector<Row>& rows, unsigned control)
    {
        for (const Row& row : rows) {
            if ((row.controls & control) == 0) continue;
            for (const int number : row.numbers)
                meanings[static_cast<std::size_t>(number)] = {row.action, row.group};
        }
    }
};
} // namespace

int Codes::number(QByteArrayView written)
{
    int number = 0;
    qsizetype point = -1;
    for (qsizetype at = 0; at < written.size(); ++at) {
        const char c = written[at];
        if (c == '.' && point < 0)
            point = at;
        else if (c >= '0' && c <= '9' && number < codeCount)
            number = 10 * number + (c - '0');
        else
            return -1;
    }
    if (written.isEmpty() || (point >= 0 && point < written.size() - 2)) return -1;
    if (point < 0 || point == written.size() - 1) number *= 10;
    return number;
}

Meaning Codes::meaning(Control control, char letter, int number)
{
    static const std::array<Table, 4> g{Table(gCodes, FM), Table(gCodes, FL), Table(gCodes, OM), Table(gCodes, OL)};
    static const std::array<Table, 4> m{Table(mCodes, FM), Table(mCodes, FL), Table(mCodes, OM), Table(mCodes, OL)};
    if (number < 0 || number >= codeCount) return {};
    const auto& tables = letter == 'G' ? g : m;
    return tables[static_cast<std::size_t>(control)].meanings[static_cast<std::size_t>(number)];
}
