#include "DrawnPixels.h"
#include "TermEngine/Base64.h"
#include "TermEngine/ImageCodec.h"
#include "TermEngine/ImageStore.h"
#include "TermEngine/KittyGraphics.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <png.h>
#include <zlib.h>

namespace term {
namespace {

std::string pixels(std::string_view letters) {
    std::string out;
    for (const char letter : letters) {
        out += letter == 'r'   ? std::string("\xff\0\0\xff", 4)
               : letter == 'g' ? std::string("\0\xff\0\xff", 4)
               : letter == 'b' ? std::string("\0\0\xff\xff", 4)
                               : std::string("\0\0\0\0", 4);
    }
    return out;
}

std::string png(int width, int height, const std::string& rgba) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = 0;
    ::png_image_write_to_memory(&image, nullptr, &size, 0, rgba.data(), 0, nullptr);
    std::string out(size, '\0');
    ::png_image_write_to_memory(&image, out.data(), &size, 0, rgba.data(), 0, nullptr);
    return out;
}

std::string deflated(const std::string& data) {
    uLongf size = ::compressBound(data.size());
    std::string out(size, '\0');
    ::compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(data.data()), data.size());
    out.resize(size);
    return out;
}

struct Graphics {
    ImageStore store;
    KittyGraphics kitty;
    GraphicsContext context{.cellWidth = 2, .cellHeight = 2};

    explicit Graphics(size_t limitBytes = 1'000'000, bool allowsLocalMedia = false)
        : store(limitBytes), kitty({.imageCacheLimitBytes = limitBytes, .allowsLocalMedia = allowsLocalMedia}, store) {}
    std::string reply(const std::string& body) { return kitty.handle(body, context).reply; }
    std::string send(const std::string& keys, const std::string& data) {
        return reply(keys + ";" + encodeBase64(data));
    }
    std::string frame(uint32_t id, size_t index) { return drawn(*store.find(id)->frames.at(index).pixels); }
};

} // namespace

TEST(KittyGraphics, LoadsImagesInEveryFormat) {
    const std::string rg = pixels("rgb.");
    struct Row {
        const char* label;
        std::string keys;
        std::string data;
        std::string reply;
        std::string expected; ///< empty: no image
    };
    const std::string pngData = png(2, 2, rg);
    // More than is inflated at once, of four bytes a pixel and of three.
    std::string many;
    std::string manyInRows;
    std::string manyOpaque;
    for (int i = 0; i < 150 * 155; ++i) {
        const char letter = "rgb"[i * i / 7 % 3];
        many += pixels({&letter, 1});
        manyOpaque += many.substr(many.size() - 4, 3);
        manyInRows += std::string(1, letter) + (i % 150 == 149 ? "\n" : "");
    }
    std::string wrongSum = deflated(many);
    wrongSum.back() ^= 1;
    const std::vector<Row> rows{
        {"RGBA", "i=1,s=2,v=2", rg, "Gi=1;OK", "rg\nb.\n"},
        {"RGB", "i=1,s=2,v=1,f=24", std::string("\xff\0\0\0\xff\0", 6), "Gi=1;OK", "rg\n"},
        {"deflated", "i=1,s=2,v=2,o=z", deflated(rg), "Gi=1;OK", "rg\nb.\n"},
        {"many, deflated", "i=1,s=150,v=155,o=z", deflated(many), "Gi=1;OK", manyInRows},
        {"many, deflated RGB", "i=1,s=150,v=155,o=z,f=24", deflated(manyOpaque), "Gi=1;OK", manyInRows},
        {"a wrong sum", "i=1,s=150,v=155,o=z", wrongSum, "Gi=1;EINVAL:bad compressed data", ""},
        {"PNG", "i=1,f=100", pngData, "Gi=1;OK", "rg\nb.\n"},
        {"deflated PNG", "i=1,f=100,o=z,S=99", deflated(pngData), "Gi=1;OK", "rg\nb.\n"},
        {"quiet", "i=1,q=1,s=2,v=2", rg, "", "rg\nb.\n"},
        {"query", "i=1,a=q,s=2,v=2", rg, "Gi=1;OK", ""},
        {"both names", "i=1,I=2,s=2,v=2", rg, "Gi=1,I=2;EINVAL:both an id and a number", ""},
        {"too little", "i=1,s=2,v=3", rg, "Gi=1;ENODATA:too little data", ""},
        {"too much", "i=1,s=1,v=1", rg, "Gi=1;EFBIG:too much data", ""},
        {"a bomb", "i=1,s=2,v=2,o=z", deflated(std::string(900'000, 'x')), "Gi=1;EINVAL:bad compressed data", ""},
        {"cut off", "i=1,s=2,v=2,o=z", deflated(rg).substr(0, 9), "Gi=1;EINVAL:bad compressed data", ""},
        {"broken PNG", "i=1,f=100", pngData.substr(0, 50), "Gi=1;EBADPNG:can't be decoded", ""},
        {"a huge one", "i=1,s=4000000000,v=4000000000", rg, "Gi=1;EINVAL:bad format or size", ""},
        {"beyond the limit", "i=1,s=9999,v=9999", rg, "Gi=1;EFBIG:too much data", ""},
        {"unknown format", "i=1,f=7,s=1,v=1", rg, "Gi=1;EINVAL:bad format or size", ""},
        {"unknown action", "i=1,a=Z", rg, "Gi=1;EINVAL:unknown action", ""},
        {"a file", "i=1,t=f,s=1,v=1", "/etc/passwd", "Gi=1;EPERM:only direct data are taken", ""},
        {"silenced failure", "i=1,q=2,s=2,v=3", rg, "", ""},
        {"failure under q=1", "i=1,q=1,s=2,v=3", rg, "Gi=1;ENODATA:too little data", ""},
    };
    for (const Row& row : rows) {
        Graphics graphics;
        EXPECT_EQ(graphics.send(row.keys, row.data), row.reply) << row.label;
        EXPECT_EQ(graphics.store.find(1) != nullptr ? graphics.frame(1, 0) : "", row.expected) << row.label;

        // The same in pieces of three characters.
        Graphics pieces;
        const std::string encoded = encodeBase64(row.data);
        std::string reply = pieces.reply(row.keys + ",m=1;" + encoded.substr(0, 3));
        for (size_t at = 3; reply.empty() && at < encoded.size(); at += 3) {
            reply = pieces.reply((at + 3 < encoded.size() ? "m=1;" : "m=0;") + encoded.substr(at, 3));
        }
        EXPECT_EQ(reply, row.reply) << row.label << ", in pieces";
    }
    Graphics graphics;
    EXPECT_EQ(graphics.reply("i=1,s=2,v=2;!!!!"), "Gi=1;EINVAL:bad base64");
    for (const char* malformed :
         {"", "=", "i", "i=", "i=x", "ii=1", "i=-1", "a=tt", "i=99999999999", "z=99999999999"}) {
        EXPECT_EQ(graphics.reply(malformed), "") << malformed;
    }
    EXPECT_EQ(graphics.send("I=7,s=1,v=1", pixels("r")), "Gi=2147483647,I=7;OK") << "an id of the terminal's";
    EXPECT_EQ(graphics.send("I=7,s=1,v=1", pixels("g")), "Gi=2147483646,I=7;OK");
    EXPECT_EQ(graphics.reply("a=p,I=7,p=3"), "Gi=2147483646,I=7,p=3;OK") << "the newest of the number";
    EXPECT_EQ(graphics.reply("a=p,i=5"), "Gi=5;ENOENT:no such image");
    EXPECT_EQ(graphics.reply("a=d,d=I,i=2147483647"), "");
    EXPECT_EQ(graphics.send("I=8,s=1,v=1", pixels("b")), "Gi=2147483647,I=8;OK") << "an id that is free again";
    EXPECT_EQ(graphics.send("I=9,s=1,v=1", pixels("b")), "Gi=2147483645,I=9;OK");
}

TEST(KittyGraphics, ReadsLocalMediaWhereItMay) {
    const auto folder = std::filesystem::temp_directory_path();
    const std::string path = folder / ("tty-graphics-protocol-" + std::to_string(::getpid()));
    const auto write = [&] { std::ofstream(path) << "xx" << pixels("rg"); };
    Graphics graphics(1'000'000, true);
    write();
    EXPECT_EQ(graphics.send("i=1,s=1,v=1,t=f,O=2,S=4", path), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 0), "r\n");
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(graphics.send("i=2,s=2,v=1,t=t,O=2", path), "Gi=2;OK");
    EXPECT_FALSE(std::filesystem::exists(path));
    for (const char* bad : {"/proc/self/environ", "/dev/zero", "relative", "/nowhere", "/", ""}) {
        EXPECT_TRUE(graphics.send("i=3,s=1,v=1,t=f", bad).starts_with("Gi=3;E")) << bad;
    }
}

TEST(KittyGraphics, PlacesScrollsAndDeletes) {
    Graphics graphics;
    graphics.context.topRow = 100;
    graphics.context.cursorColumn = 5;
    graphics.context.cursorRow = 10;
    ASSERT_EQ(graphics.send("i=1,s=4,v=6", pixels(std::string(24, 'r'))), "Gi=1;OK");
    struct Row {
        const char* label;
        std::string keys;
        int columns;
        int rows;
        int cursorColumns;
        int cursorRows;
    };
    const std::vector<Row> rows{
        {"as large as it is", "a=p,i=1", 2, 3, 2, 2},
        {"with an offset in the cell", "a=p,i=1,X=1,Y=1", 3, 4, 3, 3},
        {"part of it", "a=p,i=1,x=2,y=4,w=99,h=99", 1, 1, 1, 0},
        {"given cells", "a=p,i=1,c=8,r=2", 8, 2, 8, 1},
        {"given columns", "a=p,i=1,c=4", 4, 6, 4, 5},
        {"given rows", "a=p,i=1,r=6", 4, 6, 4, 5},
        {"the cursor stays", "a=p,i=1,C=1", 2, 3, 0, 0},
        {"virtual", "a=p,i=1,U=1,c=3,r=3", 3, 3, 0, 0},
        {"cells without end", "a=p,i=1,c=4000000000", 10'000, 10'000, 10'000, 9'999},
    };
    for (const Row& row : rows) {
        const GraphicsResult result = graphics.kitty.handle(row.keys, graphics.context);
        const ImagePlacement placed = graphics.store.placements().back();
        EXPECT_EQ(placed.columns, row.columns) << row.label;
        EXPECT_EQ(placed.rows, row.rows) << row.label;
        EXPECT_EQ(result.cursorColumns, row.cursorColumns) << row.label;
        EXPECT_EQ(result.cursorRows, row.cursorRows) << row.label;
        EXPECT_EQ(placed.row, 110) << row.label;
    }
    EXPECT_TRUE(graphics.reply("a=p,i=1,x=4").starts_with("Gi=1;EINVAL"));

    const auto deletes = [](const std::string& keys, size_t left, size_t imagesLeft) {
        Graphics some;
        some.context.topRow = 100;
        for (const char* id : {"1", "2", "3"}) {
            some.send(std::string("q=2,I=9") + id + ",s=2,v=2", pixels("rrrr"));
        }
        int column = 0;
        for (const auto& [id, image] : some.store.images()) {
            some.context.cursorColumn = column++;
            some.context.cursorRow = column;
            some.kitty.handle("a=p,p=7,z=" + std::to_string(column) + ",i=" + std::to_string(id), some.context);
        }
        some.kitty.handle(keys, some.context);
        EXPECT_EQ(some.store.placements().size(), left) << keys;
        EXPECT_EQ(some.store.images().size(), imagesLeft) << keys;
    };
    deletes("a=d", 0, 3);
    deletes("a=d,d=A", 0, 0);
    deletes("a=d,d=c", 2, 3);
    deletes("a=d,d=C", 2, 2);
    deletes("a=d,d=p,x=2,y=3", 2, 3);
    deletes("a=d,d=p,x=2,y=2", 3, 3);
    deletes("a=d,d=q,x=2,y=3,z=1", 3, 3);
    deletes("a=d,d=x,x=1", 2, 3);
    deletes("a=d,d=Y,y=4", 2, 2);
    deletes("a=d,d=z,z=3", 2, 3);
    deletes("a=d,d=i,i=2147483647,p=8", 3, 3);
    deletes("a=d,d=i,i=2147483647,p=7", 2, 3);
    deletes("a=d,d=I,i=2147483647", 2, 2);
    deletes("a=d,d=n,I=93", 2, 3);
    deletes("a=d,d=R,x=1,y=2147483646", 1, 1);
    deletes("a=d,d=r,x=1,y=2147483646", 1, 3);
    deletes("a=d,d=?", 3, 3);
    graphics.send("i=5,s=1,v=1", pixels("r"));
    graphics.send("i=6,s=1,v=1", pixels("r"));
    EXPECT_TRUE(graphics.kitty.handle("a=d,d=R,x=2,y=5", graphics.context).hasChanged);
    EXPECT_EQ(graphics.store.find(5), nullptr) << "without a placement";
    EXPECT_NE(graphics.store.find(6), nullptr);
    EXPECT_FALSE(graphics.kitty.handle("a=d,d=R,x=6,y=5", graphics.context).hasChanged);
}

TEST(KittyGraphics, PlacesImagesRelativeToOthers) {
    Graphics graphics;
    graphics.context.cursorRow = 3;
    graphics.context.cursorColumn = 5;
    for (const char* id : {"1", "2", "3"}) {
        graphics.send("a=t,q=2,s=2,v=2,i=" + std::string(id), pixels("rgbr"));
    }
    const auto places = [&] {
        std::string all;
        for (const ImagePlacement& some : graphics.store.placements()) {
            all +=
                std::to_string(some.imageId) + "@" + std::to_string(some.row) + "," + std::to_string(some.column) + " ";
        }
        return all;
    };
    EXPECT_EQ(graphics.reply("a=p,i=2,p=1,P=9"), "Gi=2,p=1;ENOPARENT:no such placement");
    graphics.reply("a=p,i=1,p=1,q=2");
    const GraphicsResult placed = graphics.kitty.handle("a=p,i=2,p=1,P=1,Q=1,H=-2,V=4", graphics.context);
    EXPECT_EQ(placed.reply, "Gi=2,p=1;OK");
    EXPECT_EQ(placed.cursorColumns, 0) << "the cursor stays";
    EXPECT_EQ(graphics.reply("a=p,i=3,p=1,P=2,H=1"), "Gi=3,p=1;OK");
    EXPECT_EQ(places(), "1@3,5 2@7,3 3@7,4 ");
    EXPECT_EQ(graphics.reply("a=p,i=1,p=1,P=3"), "Gi=1,p=1;ECYCLE:it would be its own parent");
    EXPECT_EQ(graphics.reply("a=p,i=1,P=1,U=1"), "Gi=1;EINVAL:a virtual placement has no parent");

    // With the parent they scroll, where they themselves lie without the region, and are renumbered and placed anew.
    graphics.store.scroll(ScreenId::normal, {2, 6, 0, 80}, -1, {2, 6, 0, 80});
    EXPECT_EQ(places(), "1@2,5 2@6,3 3@6,4 ");
    graphics.store.renumber(ScreenId::normal, 0, 10, 0);
    EXPECT_EQ(places(), "1@12,5 2@16,3 3@16,4 ");
    graphics.reply("a=p,i=1,p=1,q=2");
    EXPECT_EQ(places(), "2@7,3 3@7,4 1@3,5 ");
    graphics.reply("a=d,d=i,i=1,p=1");
    EXPECT_EQ(places(), "") << "without it they go";

    graphics.reply("a=p,i=1,p=1,q=2");
    for (int depth = 1; depth <= 9; ++depth) {
        const std::string reply =
            graphics.reply("a=p,i=1,p=" + std::to_string(depth + 1) + ",P=1,Q=" + std::to_string(depth));
        EXPECT_EQ(reply.find("ETOODEEP") != std::string::npos, depth == 9) << reply;
    }
}

/// What goes on moving together is only added up, which nobody may see.
TEST(ImageStore, MovesWhatIsNotLookedAtInBetweenAsWhatIs) {
    uint32_t seed = 1;
    const auto random = [&seed](int below) {
        seed = seed * 1664525 + 1013904223;
        return static_cast<int>((seed >> 8U) % static_cast<uint32_t>(below));
    };
    for (int round = 0; round < 400; ++round) {
        ImageStore unseen(1'000'000);
        ImageStore seen(1'000'000);
        const auto onBoth = [&](const auto& change) {
            change(unseen);
            change(seen);
            static_cast<void>(seen.movable());
        };
        const auto place = [&] {
            ImagePlacement some{.imageId = 1, .row = random(16), .column = random(8), .sourceWidth = 12};
            some.placementId = static_cast<uint32_t>(random(3));
            some.sourceHeight = 12;
            some.columns = 1 + random(2);
            some.rows = 1 + random(2);
            some.isText = random(2) == 0;
            const ImagePlacement* parent = seen.findPlacement(ScreenId::normal, 1, 0);
            if (!some.isText && some.placementId == 0 && parent != nullptr && random(2) == 0) {
                some.parentSerial = parent->serial;
                some.parentRows = random(3);
            }
            onBoth([&](ImageStore& store) { store.place(some); });
        };
        onBoth([](ImageStore& store) { EXPECT_TRUE(store.add(1, 0, {12, 12, std::vector<uint8_t>(576)})); });
        for (int count = random(4); count >= 0; --count) {
            place();
        }
        int64_t top = 0;
        int kind = 0;
        CellArea area{};
        for (int step = 0; step < 30; ++step) {
            // Often the same again, as line feeds do; sometimes elsewhere.
            if (step == 0 || random(4) == 0) {
                kind = random(4);
                area.top = top + random(10);
                area.bottom = area.top + 1 + random(10);
                area.left = random(3) == 0 ? random(6) : 0;
                area.right = random(3) == 0 ? area.left + 1 + random(4) : 99;
            }
            const int by = random(5) == 0 ? 1 : -1;
            onBoth([&](ImageStore& store) {
                if (kind == 0) {
                    store.scroll(ScreenId::normal, area, by, area);
                } else if (kind == 1) {
                    store.renumber(ScreenId::normal, area.top, 1, top);
                } else if (kind == 2) {
                    store.moveText(ScreenId::normal, area, {.columns = by}, area);
                } else {
                    const CellArea lost{area.top + 2, area.top + 3, 1, 2};
                    const bool hadText = store.hasText(ScreenId::normal, lost);
                    ASSERT_EQ(store.eraseText(ScreenId::normal, lost), hadText);
                }
            });
            if (kind == 1) {
                ++top;
                ++area.top;
                ++area.bottom;
            }
            if (random(10) == 0) {
                place();
            }
            ASSERT_EQ(seen.hasPlacements(), unseen.hasPlacements());
        }
        ASSERT_EQ(seen.placements(), unseen.placements()) << round;
    }
}

TEST(KittyGraphics, EvictsWhatIsNotShownAndThenTheOldest) {
    Graphics graphics(10'000);
    const auto add = [&](const std::string& id) {
        return graphics.send("s=10,v=10,i=" + id, std::string(400, 'x')); // 1,424 bytes each
    };
    for (const char* id : {"1", "2", "3", "4", "5", "6"}) {
        EXPECT_TRUE(add(id).ends_with(";OK"));
    }
    graphics.reply("a=p,i=1");
    EXPECT_TRUE(add("7").ends_with(";OK"));
    EXPECT_TRUE(graphics.store.find(2) != nullptr) << "it is not full yet";
    EXPECT_TRUE(add("8").ends_with(";OK"));
    EXPECT_TRUE(graphics.store.find(1) != nullptr);
    EXPECT_TRUE(graphics.store.find(2) == nullptr);
    for (int number = 10; number < 3000; ++number) {
        EXPECT_TRUE(add(std::to_string(number)).ends_with(";OK"));
        EXPECT_LE(graphics.store.usedBytes(), 10'000U);
    }
    EXPECT_TRUE(graphics.store.find(1) != nullptr);
    EXPECT_EQ(graphics.send("i=1,s=49,v=49", std::string(9604, 'x')), "Gi=1;ENOSPC:no room for the image");
    EXPECT_TRUE(add("1").ends_with(";OK"));
    for (int number = 0; number < 20'000; ++number) {
        graphics.reply("a=p,i=1");
    }
    EXPECT_LE(graphics.store.placements().size(), 4096U);
    graphics.kitty.reset();
    EXPECT_EQ(graphics.store.usedBytes(), 0U);
}

TEST(KittyGraphics, AnimatesFrames) {
    Graphics graphics;
    graphics.send("i=1,s=2,v=1", pixels("rg"));
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,x=1,z=50,Y=65535", pixels("r")), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 1), "br\n") << "on a canvas of one colour";
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,c=1", pixels("b")), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 2), "bg\n") << "on another frame";
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,r=3,x=1", pixels(".")), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 2), "bg\n") << "transparent over it";
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,r=3,x=1,X=1", pixels(".")), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 2), "b.\n");
    const auto seen = graphics.store.find(1)->frames[0].pixels;
    EXPECT_EQ(graphics.reply("a=c,i=1,r=2,c=1,w=1,h=1,X=1"), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 0), "rg\n");
    EXPECT_EQ(graphics.reply("a=c,i=1,r=3,c=1,w=1,h=1,x=1"), "Gi=1;OK");
    EXPECT_EQ(graphics.frame(1, 0), "rb\n");
    EXPECT_EQ(drawn(*seen), "rg\n") << "who draws it still has what it had";
    EXPECT_EQ(graphics.reply("a=c,i=1,r=9,c=1"), "Gi=1;ENOENT:no such frame");
    EXPECT_EQ(graphics.reply("a=c,i=1,r=1,c=1"), "Gi=1;EINVAL:bad areas");
    EXPECT_EQ(graphics.reply("a=c,i=1,r=1,c=2,x=1"), "Gi=1;EINVAL:bad areas");
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,x=2", pixels("r")), "Gi=1;EINVAL:outside of the image");
    EXPECT_EQ(graphics.send("a=f,i=1,s=1,v=1,r=9", pixels("r")), "Gi=1;ENOENT:no such frame");
    EXPECT_EQ(graphics.send("a=f,i=2,s=1,v=1", pixels("r")), "Gi=2;ENOENT:no such image");

    // Gaps: 10, 50 and none; then two rounds and a stop.
    graphics.reply("a=a,i=1,r=1,z=10");
    graphics.reply("a=a,i=1,r=3,z=-1");
    graphics.reply("a=a,i=1,s=3,v=2");
    struct Row {
        int64_t now;
        size_t frame;
        std::optional<int64_t> next;
    };
    for (const Row& row :
         {Row{1000, 0, 10}, Row{1009, 0, 1}, Row{1010, 1, 50}, Row{1059, 1, 1}, Row{1060, 2, std::nullopt}}) {
        EXPECT_EQ(graphics.kitty.advanceAnimations(row.now), row.next) << row.now;
        EXPECT_EQ(graphics.store.find(1)->currentFrame, row.frame) << row.now;
    }
    graphics.reply("a=a,i=1,s=3,c=1");
    graphics.reply("a=a,i=1,r=1,z=-1");
    graphics.reply("a=a,i=1,r=2,z=-1");
    graphics.store.find(1)->loops = 0;
    EXPECT_EQ(graphics.kitty.advanceAnimations(1 << 30), std::nullopt) << "without any gap, it does not spin";
    Graphics full(3000);
    full.send("i=1,s=10,v=10", std::string(400, 'x'));
    std::string reply;
    for (int count = 0; count < 10; ++count) {
        reply = full.send("a=f,i=1,s=1,v=1", pixels("r"));
    }
    EXPECT_EQ(reply, "Gi=1;ENOSPC:no room for the frame");
    EXPECT_LE(full.store.usedBytes(), 3000U);
}

TEST(KittyGraphics, RefusesPixelsBeyondTheAllowance) {
    const std::string raw(400, 'x');
    struct Case {
        const char* keys;
        std::string data;
    };
    for (const Case& test : std::vector<Case>{
             {"i=1,f=100", png(10, 10, raw)},
             {"i=1,o=z,s=10,v=10", deflated(raw)},
             {"a=f,i=1,s=10,v=10", raw},
             {"a=f,i=1,s=10,v=10,r=1", raw},
             {"a=c,i=1,r=2,c=1", ""},
             {"a=p,i=1,r=50", ""}}) {
        Graphics graphics;
        graphics.send("i=1,s=10,v=10", raw);
        graphics.send("a=f,i=1,s=10,v=10", raw);
        PixelAllowance& allowance = graphics.store.allowance();
        EXPECT_TRUE(allowance.take(allowance.left() - 140)); // there are 100 pixels, or 50 lines
        EXPECT_EQ(graphics.send(test.keys, test.data), "Gi=1;ENOSPC:too many pixels at once") << test.keys;
        EXPECT_EQ(graphics.store.find(1)->frames.size(), 2U) << test.keys;
        allowance.renew(0);
        EXPECT_EQ(graphics.send(test.keys, test.data), "Gi=1;OK") << test.keys;
    }
}

TEST(KittyGraphics, DrawsAllThatAProgramSendsAtOnce) {
    struct Row {
        const char* label;
        int count;
        std::string keys;     ///< of the first
        std::string nextKeys; ///< of all others
        std::string data;
    };
    const auto flat = [](int width, int height, int bytesPerPixel) {
        return deflated(std::string(static_cast<size_t>(width * height * bytesPerPixel), '\x7F'));
    };
    const std::string small = "i=1,o=z,f=32,s=320,v=240";
    const std::string large = "i=1,o=z,f=32,s=640,v=480";
    const std::string wide = "i=1,o=z,f=32,s=1280,v=720";
    const std::string full = "a=T,i=1,o=z,f=24,s=1920,v=1080";
    for (const Row& row : std::vector<Row>{
             {"a small animation", 32, small, "a=f," + small, flat(320, 240, 4)},
             {"an animation", 8, large, "a=f," + large, flat(640, 480, 4)},
             {"720p, drawn anew", 7, wide, wide, flat(1280, 720, 4)},
             {"1080p, drawn anew", 7, full, full, flat(1920, 1080, 3)},
             {"icons", 64, "i=1,f=100,o=z", "i=2,f=100,o=z", deflated(png(10, 10, std::string(400, 'x')))},
         }) {
        Graphics graphics(10'000'000);
        const std::string data = ";" + encodeBase64(row.data);
        graphics.store.allowance().renew(static_cast<size_t>(row.count) * data.size());
        for (int i = 0; i < row.count; ++i) {
            const std::string reply = graphics.reply((i == 0 ? row.keys : row.nextKeys) + data);
            EXPECT_TRUE(reply.ends_with(";OK")) << row.label << " " << i << ": " << reply;
        }
    }
}

} // namespace term
