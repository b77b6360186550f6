import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { describe, expect, it } from "vitest";
import { useScene } from "./support/scene";

const token = "correct-horse-battery-staple-0123456789";
const scene = useScene({
    args: (folder) => {
        writeFileSync(join(folder, "token"), `${token}\n`, { mode: 0o600 });
        return ["--token-file", join(folder, "token")];
    },
});

describe("a server with a token", () => {
    it("asks for it, refuses another, and shows everything to who knows it", async () => {
        const watched = await scene.open("streams");
        const { page } = watched;
        watched.allow(401);
        watched.allow(403);
        await page.getByRole("heading", { name: "Sign in" }).waitFor();
        await watched.keep("sign_in");
        await page.getByLabel("Token").fill("something-else");
        await page.keyboard.press("Enter");
        await page.getByRole("alert").filter({ hasText: "not the token" }).waitFor();
        await page.getByLabel("Token").fill(token);
        await page.keyboard.press("Enter");
        const card = page.getByRole("article").filter({ hasText: "gate" });
        await card.getByText("running").waitFor();
        await page.getByText("live", { exact: true }).waitFor();
        const picture = card.getByRole("img");
        await expect.poll(() => picture.evaluate((image: HTMLImageElement) => image.naturalWidth)).toBeGreaterThan(100);
        await page.reload();
        await card.getByText("running").waitFor();
        // Scripts do not see it.
        expect(await page.evaluate(() => document.cookie)).toBe("");
        await page.getByRole("button", { name: "Sign out" }).click();
        await page.getByRole("heading", { name: "Sign in" }).waitFor();
        await page.reload();
        await page.getByRole("heading", { name: "Sign in" }).waitFor();
    });
});
