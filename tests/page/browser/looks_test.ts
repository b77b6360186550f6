import { source as axe } from "axe-core";
import type { Page } from "playwright-core";
import { describe, expect, it } from "vitest";
import { desktop, phone } from "./support/browser";
import { useScene } from "./support/scene";

const scene = useScene();
const views = ["streams", "streams/gate", "streams/gate/settings", "streams/gate/calibration", "settings", "algorithms", "events"];
const screens = { phone, desktop };

/** What a checker of accessibility finds wrong: contrast, names, roles, order of headings. */
async function barriers(page: Page): Promise<string[]> {
    await page.evaluate(axe);
    return page.evaluate(async () => {
        type Found = { violations: { id: string; nodes: { html: string; failureSummary?: string }[] }[] };
        const checker = (window as unknown as { axe: { run: () => Promise<Found> } }).axe;
        const { violations } = await checker.run();
        return violations.flatMap(({ id, nodes }) => nodes.map((node) => `${id}: ${node.html} ${node.failureSummary ?? ""}`));
    });
}

describe("the page", () => {
    for (const [screen, options] of Object.entries(screens))
        for (const colorScheme of ["light", "dark"] as const)
            it(`fits a ${screen} in ${colorScheme} colours`, async () => {
                const watched = await scene.open("streams", { ...options, colorScheme });
                for (const view of views) {
                    await watched.go(view);
                    await watched.page.getByRole("heading", { level: 1 }).waitFor();
                    // Pictures and events come in.
                    await watched.page.waitForTimeout(view === "events" ? 2500 : 1000);
                    expect(await watched.overhang(), view).toBe(0);
                    expect(await barriers(watched.page), view).toEqual([]);
                    await watched.keep(`${screen}_${colorScheme}_${view.replaceAll("/", "_")}`);
                }
                const background = await watched.page.evaluate(() => getComputedStyle(document.body).backgroundColor);
                const [red = 0] = (/\d+/.exec(background) ?? []).map(Number);
                expect(red > 128).toBe(colorScheme === "light");
            });
});
