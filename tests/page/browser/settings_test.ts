import { describe, expect, it } from "vitest";
import { areas, nextDetections } from "./support/detections";
import { useScene } from "./support/scene";

const scene = useScene();
/** Larger than nearly all people in the demo video. */
const large = 4000;

describe("settings", () => {
    it("are pending until they are applied, and then fewer boxes are seen", async () => {
        const before = await nextDetections(scene.server, 30);
        expect(areas(before).filter((area) => area < large).length).toBeGreaterThan(0);

        const watched = await scene.open("streams/gate/settings");
        const { page } = watched;
        const field = page.getByLabel("Minimum area", { exact: true });
        await expect.poll(() => field.inputValue()).toBe("400");
        await field.fill(String(large));
        const pending = page.getByRole("region", { name: "Pending changes" });
        await expect.poll(() => pending.textContent()).toContain(`400 \u2192 ${large}`);
        await watched.keep("settings_pending");
        // Nothing has happened yet.
        const settings = () => scene.server.get<number>("config/streams/gate/settings/Motion/minimum_area");
        expect(await settings()).toBe(400);

        await pending.getByRole("button", { name: "Apply" }).click();
        await page.getByText("Applied", { exact: true }).waitFor();
        expect(await settings()).toBe(large);
        const after = await nextDetections(scene.server, 31);
        expect(areas(after.slice(1)).filter((area) => area < large)).toEqual([]);
        expect(areas(after).length).toBeLessThan(areas(before).length);

        await page.getByRole("button", { name: /Follow the common value \(400\)/ }).click();
        await pending.getByRole("button", { name: "Apply" }).click();
        await expect.poll(settings).toBe(400);
    });

    it("of all streams are followed by those that have none of their own", async () => {
        const watched = await scene.open("settings");
        const { page } = watched;
        const group = page.getByRole("group", { name: "Motion" });
        await group.getByLabel("Threshold", { exact: true }).fill("9.5");
        await page.getByRole("button", { name: "Apply" }).click();
        await page.getByText("Applied", { exact: true }).waitFor();
        expect(await scene.server.get("config/streams/gate/settings/Motion/threshold")).toBe(9.5);
        await group.getByRole("button", { name: /Follow the default \(6\)/ }).click();
        await page.getByRole("button", { name: "Apply" }).click();
        await expect.poll(() => scene.server.get("config/algorithms/Motion/threshold")).toBe(6);
    });

    it("that are out of range say so beside their field", async () => {
        const watched = await scene.open("streams/gate/settings");
        const { page } = watched;
        const field = page.getByLabel("Threshold", { exact: true });
        await field.fill("99");
        const error = page.getByRole("alert").filter({ hasText: "Must be 2 to 15" });
        await error.waitFor();
        const [box, errorBox] = [await field.boundingBox(), await error.boundingBox()];
        expect(Math.abs((errorBox?.y ?? 0) - (box?.y ?? 0))).toBeLessThan(200);
        expect(await page.getByRole("button", { name: "Apply" }).isDisabled()).toBe(true);
        await watched.keep("settings_wrong");
    });

    it("that the server refuses say so beside their field, and nothing is changed", async () => {
        const watched = await scene.open("streams/gate/settings");
        const { page } = watched;
        watched.allow(422);
        await page.getByLabel("Algorithms-1", { exact: true }).fill("motoin");
        await page.getByLabel("Minimum area", { exact: true }).fill("500");
        await page.getByRole("button", { name: "Apply" }).click();
        await page.locator(".field.wrong").filter({ hasText: "Algorithms" }).first().waitFor();
        expect(await scene.server.get("config/streams/gate/settings/Motion/minimum_area")).toBe(400);
        await watched.keep("settings_refused");
    });

    it("that somebody else changes are shown at once", async () => {
        const watched = await scene.open("streams/gate/settings");
        const field = watched.page.getByLabel("Opening", { exact: true });
        await expect.poll(() => field.inputValue()).toBe("1");
        await fetch(`${scene.server.address}/api/config`, {
            method: "PATCH",
            headers: { "Content-Type": "application/merge-patch+json" },
            body: JSON.stringify({ algorithms: { Motion: { opening: 3 } } }),
        });
        await expect.poll(() => field.inputValue()).toBe("3");
    });
});
