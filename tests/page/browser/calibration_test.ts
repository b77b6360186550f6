import type { Page } from "playwright-core";
import { describe, expect, it } from "vitest";
import { areas, nextDetections } from "./support/detections";
import { useScene } from "./support/scene";

const scene = useScene();

/** In pixels of the demo video: what was measured on its ground, and people of known height. */
const ground = [
    [141, 385, 562, 349, "7.1"],
    [562, 349, 526, 186, "13.0"],
    [141, 385, 188, 215, "12.0"],
    [188, 215, 526, 186, "9.2"],
    [141, 385, 526, 186, "16.1"],
] as const;
const poles = [
    [278, 321, 278, 230, "1.75"],
    [515, 243, 515, 165, "1.8"],
] as const;

/** Draws with the mouse from one pixel of the picture to another, and types the length. */
async function draw(page: Page, [x1, y1, x2, y2, metres]: readonly [number, number, number, number, string]) {
    const picture = page.getByRole("application", { name: "Picture to draw on" });
    await picture.scrollIntoViewIfNeeded();
    const box = await picture.boundingBox();
    if (!box) throw new Error("no picture");
    const scale = box.width / 768;
    await page.mouse.move(box.x + x1 * scale, box.y + y1 * scale);
    await page.mouse.down();
    await page.mouse.move(box.x + x2 * scale, box.y + y2 * scale, { steps: 3 });
    await page.mouse.up();
    // The length of what was drawn has the focus.
    await page.keyboard.type(metres);
}

describe("a calibration", () => {
    it("is found from segments that are drawn on the picture, and gives metres", async () => {
        const watched = await scene.open("streams/gate/calibration");
        const { page } = watched;
        for (const segment of ground) await draw(page, segment);
        await page.getByRole("button", { name: "Pole, foot first" }).click();
        for (const pole of poles) await draw(page, pole);
        await page.getByRole("button", { name: "Solve" }).click();
        await page.getByText("The camera was found").waitFor();
        const value = async (name: string) => {
            const row = page.getByRole("row").filter({ hasText: name });
            return Number.parseFloat((await row.getByRole("cell").nth(1).textContent()) ?? "");
        };
        expect(await value("Tilt")).toBeCloseTo(17, -0.5);
        expect(await value("Height")).toBeGreaterThan(6);
        expect(await value("Height")).toBeLessThan(8.5);
        // The camera looks down too far to see it.
        await page.getByText("The horizon lies outside the picture").waitFor();
        expect(await page.locator(".answer .grid").count()).toBeGreaterThan(5);
        expect(await page.getByText(/^measured/).count()).toBe(ground.length + poles.length);
        await watched.keep("calibration");

        await page.getByRole("button", { name: "Save" }).click();
        await page.getByText("Saved: the stream measures in metres now").waitFor();
        await page.getByRole("link", { name: "Live", exact: true }).click();
        await page.getByRole("columnheader", { name: "Height" }).waitFor();
        await page.getByRole("cell", { name: /^1\.\d\d m$/ }).first().waitFor();
        await watched.keep("stream_in_metres");
        const lines = await nextDetections(scene.server, 20);
        expect(areas(lines).length).toBeGreaterThan(0);
        expect(lines.flatMap((line) => line.objects).filter((object) => (object.height_m ?? 0) > 1).length).toBeGreaterThan(0);
    });

    it("is not found from too little, and the reason is told", async () => {
        const watched = await scene.open("streams/gate/calibration");
        const { page } = watched;
        watched.allow(422);
        await draw(page, ground[0]);
        await page.getByRole("button", { name: "Solve" }).click();
        await page.getByRole("alert").filter({ hasText: "too few references" }).waitFor();
        await watched.keep("calibration_refused");
    });

    it("can be moved by its ends, and lengths are asked for", async () => {
        const watched = await scene.open("streams/gate/calibration");
        const { page } = watched;
        await draw(page, [100, 300, 300, 300, ""]);
        expect(await page.getByRole("button", { name: "Solve" }).isDisabled()).toBe(true);
        const end = page.getByRole("button", { name: /Ground 1, second end/ });
        await page.getByRole("button", { name: "Move ends" }).click();
        const box = await end.boundingBox();
        if (!box) throw new Error("no end");
        await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
        await page.mouse.down();
        await page.mouse.move(box.x + 60, box.y + 40, { steps: 3 });
        await page.mouse.up();
        const moved = await end.getAttribute("aria-label");
        expect(moved).not.toContain("at 300, 300");
        await page.getByRole("button", { name: "Remove Ground 1" }).click();
        expect(await end.count()).toBe(0);
    });
});
