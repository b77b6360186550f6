import type { Page } from "playwright-core";
import { describe, expect, it } from "vitest";
import { useScene } from "./support/scene";

const scene = useScene();
const views = ["streams", "streams/gate", "streams/gate/settings", "streams/gate/calibration", "settings", "algorithms", "events"];

/** What has the focus: its name for people, and whether it can be seen to have it. */
function focused(page: Page): Promise<{ name: string; visible: boolean; body: boolean }> {
    return page.evaluate(() => {
        const element = document.activeElement ?? document.body;
        const named = element as HTMLInputElement;
        const labels = [...(named.labels ?? [])].map((label) => label.textContent);
        const name = element.getAttribute("aria-label") ?? (labels.join(" ") || element.textContent) ?? "";
        const style = getComputedStyle(element);
        const around = getComputedStyle(element.closest(".editor") ?? element);
        const visible = [style, around].some((one) => one.outlineStyle !== "none" && one.outlineWidth !== "0px");
        return { name: name.trim(), visible, body: element === document.body };
    });
}

async function tabTo(page: Page, name: string | RegExp): Promise<void> {
    for (let step = 0; step < 80; ++step) {
        await page.keyboard.press("Tab");
        const now = (await focused(page)).name;
        if (typeof name === "string" ? now === name : name.test(now)) return;
    }
    throw new Error(`the Tab key never comes to ${String(name)}`);
}

describe("the keyboard", () => {
    for (const view of views)
        it(`walks through ${view} and out again, and its focus is seen`, async () => {
            const { page } = await scene.open(view);
            await page.getByRole("heading", { level: 1 }).waitFor();
            await page.getByText("live", { exact: true }).waitFor();
            await page.waitForTimeout(500);
            const names: string[] = [];
            for (let step = 0; step < 150; ++step) {
                await page.keyboard.press("Tab");
                const now = await focused(page);
                if (now.body) break;
                expect(now.name, `stop ${step} has a name`).not.toBe("");
                expect(now.visible, `'${now.name}' is seen to have the focus`).toBe(true);
                names.push(now.name);
            }
            expect(names[0]).toBe("Skip to the content");
            expect(names.at(-1)).toBe("Licences");
        });

    it("skips to the content", async () => {
        const { page } = await scene.open("settings");
        await page.getByLabel("Threshold", { exact: true }).waitFor();
        await page.keyboard.press("Tab");
        await page.keyboard.press("Enter");
        await page.keyboard.press("Tab");
        expect((await focused(page)).name).toMatch(/^(Minimum|Threshold|[A-Z])/);
        expect(page.url()).toContain("#/settings");
    });

    it("changes and applies a setting", async () => {
        const { page } = await scene.open("streams/gate/settings");
        await page.getByLabel("Minimum area", { exact: true }).waitFor();
        await tabTo(page, "Minimum area");
        await page.keyboard.press("Control+A");
        await page.keyboard.type("450");
        await tabTo(page, "Apply");
        await page.keyboard.press("Enter");
        await page.getByText("Applied", { exact: true }).waitFor();
        expect(await scene.server.get("config/streams/gate/settings/Motion/minimum_area")).toBe(450);
    });

    it("draws on the picture", async () => {
        const { page } = await scene.open("streams/gate/calibration");
        await page.getByRole("application").waitFor();
        await tabTo(page, "Picture to draw on");
        for (const key of ["ArrowLeft", "Shift+ArrowDown", "Enter", "Shift+ArrowRight", "Shift+ArrowRight", "Enter"])
            await page.keyboard.press(key);
        expect((await focused(page)).name).toBe("Ground 1: length in metres");
        await page.keyboard.type("2.5");
        const end = page.getByRole("button", { name: /Ground 1, first end/ });
        expect(await end.getAttribute("aria-label")).toContain("at 383, 298");
        await end.focus();
        await page.keyboard.press("Shift+ArrowUp");
        expect(await end.getAttribute("aria-label")).toContain("at 383, 288");
        await page.keyboard.press("Delete");
        expect(await end.count()).toBe(0);
    });
});
