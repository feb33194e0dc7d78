# Vantorel. MIT licence, see LICENSE.
# Dense screens, fractional scaling, large text, dark schemes and right-to-left locales: nothing is cut or out of place.

from PIL import Image, ImageChops

from harness import settings, wait
from harness.page import colored
from harness.status import GREEN_STATUS, STRIP_GREY

BLUE = (0x22, 0x44, 0x66)
YELLOW = (0xe0, 0xa0, 0x30)
MESSAGE = ("A message that is long enough to need several lines in a panel of ordinary width, "
           "whatever the size of its letters.")
# A square of 100 of the page's own pixels; a click brings the panels, one after the other.
PAGE = colored("#224466", "report('ratio', devicePixelRatio); report('width', innerWidth);"
               "onclick = () => setTimeout(() => {"
               f"alert('{MESSAGE}'); report('sure', confirm('Sure?')); report('name', prompt('Name?', 'Ada')); }}, 0);",
               body="<div style='width:100px;height:100px;background:#e0a030'></div>")
IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"


class Look:
    """One way to show things, and a shell that has to be well to look at in it."""

    def __init__(self, world, text=1.0, leftwards=False, environment=None):
        self.world = world
        self.text = text  # times the ordinary size
        self.leftwards = leftwards  # text runs from right to left
        self.shell = world.launch(environment=environment)
        self.window = world.window(self.shell)
        self.shell.wait_launched()
        wait.settled(lambda: world.screen.geometry(self.window), 0.2)
        self.place = world.screen.geometry(self.window)

    def pixels(self, extents, around):
        """Where on the screen a rectangle is that is told in points, relative to the window at `around`."""
        x, y, width, height = (number * self.world.scale for number in extents)
        return around[0] + x, around[1] + y, around[0] + x + width, around[1] + y + height

    def readable(self, node, around, least=3.0):
        """The node is drawn within the window at `around`, on the screen, in colours that can be told apart."""
        box = self.pixels(node.extents(), around)
        left, top, width, height = around
        assert box[2] - box[0] >= 4 and box[3] - box[1] >= 4, f"{node} has a size: {box}"
        assert left <= box[0] and top <= box[1] and box[2] <= left + width and box[3] <= top + height, \
            f"{node} at {box} is inside the window at {around}"
        assert 0 <= box[0] and 0 <= box[1] and box[2] <= self.world.screen.width \
            and box[3] <= self.world.screen.height, f"{node} at {box} is on the screen"
        wait.until(lambda: contrast(self.world.screen.part(*box)) >= least, 3,
                   lambda: f"{node} is readable, not {contrast(self.world.screen.part(*box)):.2f}")

    def content(self, width=900, height=750):
        """The content has its size in points, whatever the menu bar above takes."""
        top = self.world.strip_top(self.window)
        _, _, wide, high = self.world.screen.geometry(self.window)
        wait.same((wide / self.world.scale, (high - top) / self.world.scale), (width, height), "content in points")

    def strip(self, status):
        """The strip is 30 points high, and its text is whole and stands where the line begins."""
        scale = self.world.scale
        self.world.wait_status(self.shell, status)
        self.world.wait_color(self.window, "green" if status[0] == "✅" else "orange")
        top, rows = self.world.strip_rows(self.window)
        wait.same(rows, 30 * scale, "rows of the strip")
        picture = self.world.screen.picture(self.window)
        strip = picture.crop((0, top, picture.width, top + rows))
        left, above, right, below = ink(strip, STRIP_GREY)
        assert above >= 1 and below <= rows - 1, f"the text takes rows {above} to {below} of {rows}"
        assert below - above >= min(22, 14 * self.text) * scale, f"the text is only {below - above} pixels high"
        assert left >= 10 * scale and right <= picture.width - 10 * scale, f"the text keeps its margins: {left} {right}"
        start, rest = (picture.width - right, left) if self.leftwards else (left, picture.width - right)
        assert start <= 16 * scale, f"the text begins {start} pixels from where the line begins"
        assert rest >= 50 * scale, f"the text is shown to its end, {rest} pixels before the edge"

    def menus(self, titles=("Vantor", "Window")):
        """The menu bar is readable; its menus open by mouse and by F10, below their titles and with all their items."""
        world = self.world
        world.screen.activate(self.window)
        bar = world.menu_bar(self.shell)
        wait.same(world.menu_titles(self.shell), ["Vantor", "View", "Window"], "menu bar")
        entries = {node.name(): node for node in bar.children()}
        for node in entries.values():
            self.readable(node, self.place)
        places = [node.extents()[0] for node in entries.values()]
        wait.same(places, sorted(places, reverse=self.leftwards), "the order of the titles")
        for title in titles:
            popup, menu, items = world.open_menu(self.shell, title)
            self.menu(entries[title], popup, menu, items)
            world.close_menu(popup)
        before = {each.id for each in world.screen.windows_of(self.shell.pid)}
        world.hands.press("f10")
        popup = wait.until(lambda: [each for each in world.screen.windows_of(self.shell.pid) if each.id not in before],
                           5, "F10 opens a menu")[0]
        nodes = list(entries["Vantor"].walk())
        self.menu(entries["Vantor"], popup, [node for node in nodes if node.role() == "menu"][0],
                  [node for node in nodes[1:] if "menu item" in node.role()])
        world.close_menu(popup)

    def menu(self, entry, popup, menu, items):
        """An open menu stands below its title and within the window, and shows all items."""
        scale = self.world.scale
        x, y, width, _ = self.place
        start, _, end, below = self.pixels(entry.extents(), self.place)
        corner = start - 8 * scale, end + 8 * scale  # the title's padding

        def fits():
            left, top, wide, _ = self.world.screen.geometry(popup)
            near = abs(left + wide - corner[1]) if self.leftwards else abs(left - corner[0])
            return (near <= 2 * scale and abs(top - below) <= 8 * scale
                    and x - 2 * scale <= left and left + wide <= x + width + 2 * scale)
        wait.until(fits, 3, lambda: f"the menu {self.world.screen.geometry(popup)} below {corner}, in {self.place}")
        around = wait.settled(lambda: self.world.screen.geometry(popup), 0.15)
        # The toolkit counts from somewhere in the main window: only the difference to the menu counts.
        menu_left, menu_top, _, _ = menu.extents()
        inside = (around[0] - menu_left * scale, around[1] - menu_top * scale)
        assert len(items) >= 2
        for item in items:
            box = self.pixels(item.extents(), inside)
            assert around[0] <= box[0] and around[1] <= box[1] and box[2] <= around[0] + around[2] \
                and box[3] <= around[1] + around[3], f"{item} at {box} is inside the menu at {around}"
            for label in [node for node in item.walk() if node.role() == "label"]:
                # Its shortcut is grey.
                shown = self.pixels(label.extents(), inside)
                wait.until(lambda box=shown: contrast(self.world.screen.part(*box)) >= 2, 3,
                           lambda label=label: f"{label} shows")

    def page(self):
        """The page has all pixels of the screen, and takes part in the size of texts."""
        scale = self.world.scale
        self.shell.wait_loaded()
        wait.same(self.world.server.wait_report("ratio"), scale, "device pixel ratio")
        wait.same(round(self.world.server.wait_report("width") * self.text), 900, "width of the page")
        self.world.wait_page_color(self.window, BLUE)
        top = self.world.strip_top(self.window) + 30 * scale
        picture = self.world.screen.picture(self.window)
        side = round(100 * self.text * scale)
        for x, y, color in ((0, 0, YELLOW), (side - 1, side - 1, YELLOW), (side, 0, BLUE), (0, side, BLUE),
                            (picture.width - 1, picture.height - top - 1, BLUE)):
            wait.same(picture.getpixel((x, top + y)), color, f"colour at {x}, {y} of the page")

    def panels(self):
        """Alert, confirm and prompt stand in the middle of the window, whole, and can be answered with the mouse."""
        x, y, width, height = self.place
        self.world.hands.click(x + width / 2, y + height - 40)
        self.panel(["Vantor", MESSAGE], ["OK"])
        self.panel(["Vantor", "Sure?"], ["Cancel", "OK"])
        wait.same(self.world.server.wait_report("sure"), True, "answer to the confirm")
        self.panel(["Vantor", "Name?"], ["Cancel", "OK"], field="Name?")
        wait.same(self.world.server.wait_report("name"), "Ada", "answer to the prompt")

    def panel(self, texts, titles, field=None):
        """The open panel is where it belongs, shows all it has, and takes OK."""
        world = self.world
        wait.until(lambda: world.dialog_labels(self.shell) == texts and world.dialog_buttons(self.shell) == titles, 5,
                   lambda: f"a panel with {texts} and {titles}\n" + world.ax.dump(self.shell.pid))
        dialog = world.dialog(self.shell)
        world.screen.activate(dialog)
        place = wait.settled(lambda: world.screen.geometry(dialog), 0.2)
        sides = world.screen.frame_extents(dialog)
        for middle, begin, size in zip((place[0] + place[2] / 2, place[1] + place[3] / 2), self.place, self.place[2:]):
            assert abs(middle - begin - size / 2) <= 3 * world.scale, f"{place} is in the middle of {self.place}"
        assert place[0] >= sides[0] and place[1] >= sides[2] and place[0] + place[2] + sides[1] <= world.screen.width \
            and place[1] + place[3] + sides[3] <= world.screen.height, f"{place} is on the screen"
        wait.same([node.name() for node in world.ax.all(self.shell.pid, role="alert dialog")], ["Vantor"], "dialogs")
        buttons = world.dialog_nodes(self.shell, "button")
        labels = [node for node in world.dialog_nodes(self.shell, "label") if node.name() in texts]
        for node in labels + buttons:
            self.readable(node, place)
        if field:
            self.field(field, place, labels[-1])
        places = [node.extents()[0] for node in buttons]
        wait.same(places, sorted(places, reverse=self.leftwards), "the order of the buttons")
        world.press_button(self.shell, "OK")

    def field(self, name, place, label):
        """The prompt's field: 300 by 24 points, or as high as its text needs, and nothing of it hidden."""
        node = self.world.dialog_nodes(self.shell, "text box")[0]
        wait.same(node.name(), name, "name of the field")
        self.readable(node, place)
        extents = node.extents()
        wait.same(extents[2:], (300, max(24, label.extents()[3])), "size of the field")
        groups = [group.extents() for group in self.world.dialog_nodes(self.shell, "group")]
        assert extents in groups, f"the field {extents} has the place that it needs, not {groups}"

    def quit(self):
        """Ends the shell; the frame is stored in points."""
        title_bar = self.world.screen.frame_extents(self.window)[2] / self.world.scale
        self.shell.quit()
        wait.same(self.world.home.saved_size(), (900, 750 + title_bar), "stored size")

    def everything(self):
        """All of it, in an order that leaves the page time to load."""
        self.content()
        self.menus()
        self.strip(GREEN_STATUS.format(self.world.port))
        self.page()
        self.panels()
        self.quit()


def ink(picture, background):
    """(left, top, right, bottom) of what is not background."""
    difference = ImageChops.difference(picture, Image.new("RGB", picture.size, background)).convert("L")
    return difference.point(lambda value: 255 if value > 2 else 0).getbbox()


def luminance(color):
    """The relative luminance of the web's accessibility guidelines."""
    parts = [value / 255 for value in color]
    red, green, blue = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(picture):
    """The contrast of a picture's commonest colour and the one that is farthest from it, from 1 to 21."""
    colors = picture.getcolors(picture.width * picture.height)
    ground = luminance(max(colors)[1]) + 0.05
    return max(max(ground, other) / min(ground, other) for other in (luminance(color) + 0.05 for _, color in colors))


def is_dark(world, window):
    """Whether the menu bar is drawn on a dark ground."""
    return luminance(world.screen.picture(window).getpixel((2, 2))) < 0.1


def desktop(world, size=(1400, 1000)):
    """A desktop without settings yet, and the page."""
    world.desktop(manager=None, size=size)
    world.server.page(PAGE)


def test_dense_screen(world):
    desktop(world, (2000, 1700))
    world.start_manager("xfwm4")
    world.scale = 2
    Look(world, environment={"GDK_SCALE": "2"}).everything()


def test_dense_screen_over_a_relaunch(world):
    world.desktop(size=(2000, 1700))
    world.bundle.use_server(IDLE_SERVER)
    world.scale = 2
    first = Look(world, environment={"GDK_SCALE": "2"})
    first.content()
    world.screen.resize(first.window, 1240, 1040 + world.strip_top(first.window))
    world.screen.move(first.window, 300, 200)
    wait.settled(lambda: world.screen.geometry(first.window))
    title_bar = world.screen.frame_extents(first.window)[2] / 2
    first.shell.quit()
    wait.same(world.home.saved_size(), (620, 520 + title_bar), "stored size in points")
    second = Look(world, environment={"GDK_SCALE": "2"})
    second.content(620, int(520 + title_bar + 0.5))  # a window ends at whole points
    x, _, width, _ = second.place
    assert abs(x + width / 2 - world.screen.width / 2) <= 12, "the window is in the middle"


def test_fractional_scaling(world):
    desktop(world)
    settings.set_resources(world.screen, "Xft.dpi: 144")
    world.start_manager("xfwm4")
    Look(world, text=1.5).everything()


def test_text_twice_as_large(world):
    desktop(world, (1366, 900))
    settings.publish(world.screen, Xft_DPI=192 * 1024)
    world.start_manager("xfwm4")
    Look(world, text=2.0).everything()


def test_dark_scheme(world):
    desktop(world)
    settings.write_gtk_settings(world.home, gtk_application_prefer_dark_theme=1)
    world.start_manager("xfwm4")
    look = Look(world)
    wait.until(lambda: is_dark(world, look.window), 3, "the scheme is dark")
    look.everything()


def test_dark_theme_and_scale_by_the_environment(world):
    world.bundle.use_server(IDLE_SERVER)
    look = Look(world, text=1.5, environment={"GTK_THEME": "Adwaita:dark", "GDK_DPI_SCALE": "1.5"})
    wait.until(lambda: is_dark(world, look.window), 3, "the theme is dark")
    look.content()
    look.menus(["View"])
    look.quit()


def test_right_to_left(world):
    desktop(world)
    world.start_manager("xfwm4")
    Look(world, leftwards=True, environment=settings.locale(world.root, "he_IL")).everything()
