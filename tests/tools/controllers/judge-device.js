// SPDX-License-Identifier: GPL-3.0-or-later
// Drives the lab's players with the package `sonos`, knowing only its public interface, and prints what it saw as one
// JSON object. Usage: node judge-device.js ADDRESS STREAM_URI VOLUME
'use strict'

const { AsyncDeviceDiscovery, Sonos } = require('sonos')

const [address, streamUri, volume] = process.argv.slice(2)
const pause = (ms) => new Promise((resolve) => setTimeout(resolve, ms))

async function play (device) {
  await device.setAVTransportURI({ uri: streamUri, metadata: '', onlySetUri: true })
  const started = await device.play()
  await pause(1500)
  const playing = await device.getCurrentState()
  const track = await device.currentTrack()
  const paused = await device.pause()
  const after = await device.getCurrentState()
  let refusal = null
  try {
    await device.pause()
  } catch (error) {
    refusal = String(error.message)
  }
  return { started, playing, uri: track.uri, paused, after, refusal }
}

async function main () {
  const found = await new AsyncDeviceDiscovery().discoverMultiple({ timeout: 3000 })
  const device = new Sonos(address)
  const groups = await device.getAllGroups()
  const seen = {
    discovered: found.map((one) => one.host).sort(),
    description: await device.deviceDescription(),
    attributes: await device.getZoneAttrs(),
    zone: await device.getZoneInfo(),
    muted: await device.getMuted(),
    volumeBefore: await device.getVolume(),
    groups: groups.map((group) => ({
      name: group.Name,
      coordinator: group.Coordinator,
      members: group.ZoneGroupMember.map((member) => member.ZoneName)
    }))
  }
  await device.setVolume(Number(volume))
  await device.setMuted(true)
  seen.volumeAfter = await device.getVolume()
  seen.played = await play(device)
  await device.leaveGroup()
  seen.groupsAfter = (await device.getAllGroups()).length
  return seen
}

main().then((seen) => {
  process.stdout.write(JSON.stringify(seen), () => process.exit(0))
}, (error) => {
  process.stderr.write(`${error.stack}\n`, () => process.exit(1))
})
setTimeout(() => {
  process.stderr.write('no end within 40 s\n', () => process.exit(1))
}, 40000)
